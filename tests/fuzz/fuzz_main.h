// What the fuzz targets share: a private root to run in, and a way to say what must hold.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fakes/fixture.h"

// One input; each target has its own.
void FuzzOne(const std::uint8_t* data, std::size_t size);

// Ends the program with the message, as a finding, unless it holds.
void Must(bool holds, const char* what);

// The daemon's globals, as fresh as in a unit test, with the debug level -1 to 4 that the byte
// chooses.
class FreshDaemon : public fake::DaemonTest {
  public:
    explicit FreshDaemon(unsigned level_byte);
    fake::World& World() { return world; }
    using DaemonTest::ReadAll;
    using DaemonTest::WriteTemp;

  private:
    void TestBody() override {}
};

// What the fuzz targets share: a private root to run in, and a way to say what must hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fakes/fixture.h"

// One input; each target has its own.
void FuzzOne(const std::uint8_t* data, std::size_t size);

// Ends the program with the message, as a finding, unless it holds.
void Must(bool holds, const char* what);

// Bytes as a target reads them: some to choose by, then texts, parted by the byte 0x1e. What is not
// there is 0 or empty.
class FuzzedInput {
  public:
    FuzzedInput(const std::uint8_t* data, std::size_t size, std::size_t choices);
    unsigned Choice(std::size_t i) const { return i < choices_.size() ? choices_[i] : 0; }
    std::size_t Parts() const { return parts_.size(); }
    std::string Part(std::size_t i) const { return i < parts_.size() ? parts_[i] : ""; }

  private:
    std::vector<std::uint8_t> choices_;
    std::vector<std::string> parts_;
};

// The daemon's globals, as fresh as in a unit test, with the debug level -1 to 4 that the byte
// chooses.
class FreshDaemon : public fake::DaemonTest {
  public:
    explicit FreshDaemon(unsigned level_byte);
    fake::World& World() { return world; }
    using DaemonTest::ReadAll;
    using DaemonTest::WriteTemp;
    static void Write(const std::string& path, const std::string& content);

  private:
    void TestBody() override {}
};

// The base of every unit test that needs the daemon's globals.
#pragma once

#include <gtest/gtest.h>

#include "fakes/fake_world.h"

namespace fake {

class DaemonTest : public ::testing::Test {
  protected:
    DaemonTest();
    ~DaemonTest() override;

    // Puts `text` into the test's own folder and returns the path.
    std::string WriteTemp(const std::string& name, const std::string& text);
    static std::string ReadAll(const std::string& path);
    // The test's own folder, removed with the test.
    const std::string& Folder() const { return folder_; }
    // Makes the port fail: every write, FIONREAD and read from now on.
    static void BreakPort();

    // Descriptors that the room keeps for the life of the process.
    void ExpectKeptDescriptors(int count) { kept_descriptors_ = count; }

    World world;

  private:
    const int open_before_;
    int kept_descriptors_ = 0;
    std::string folder_;
    int modem_end_ = -1;
};

}  // namespace fake

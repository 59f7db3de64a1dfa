// The modem reset: started in the background, never waited for.
#include "modem/reset_device.h"

#include "fakes/fixture.h"

namespace {

class ResetDeviceTest : public fake::DaemonTest {};

TEST_F(ResetDeviceTest, LogsAndStartsTheToolInTheBackground) {
    ResetDevice();
    EXPECT_EQ(world.log, (std::vector<std::string>{"Resetting device"}));
    EXPECT_EQ(world.shell, (std::vector<std::string>{"ResetPCMCIA now &> /dev/null &"}));
    EXPECT_EQ(world.slept_us, 0);
}

TEST_F(ResetDeviceTest, IgnoresAToolThatIsMissing) {
    world.shell_status["ResetPCMCIA now &> /dev/null &"] = 127 << 8;
    ResetDevice();
    EXPECT_EQ(world.log.size(), 1u);
}

}  // namespace

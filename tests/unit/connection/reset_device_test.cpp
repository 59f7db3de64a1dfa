#include "modem/reset_device.h"

#include "connection_test.h"

namespace {

class ModemReset : public ConnectionTest {};

TEST_F(ModemReset, StartsTheResetToolInTheBackgroundAndGoesOn) {
    ResetDevice();
    EXPECT_EQ(Story(), (Lines{"log: Resetting device", "run: ResetPCMCIA now &> /dev/null &"}));
    EXPECT_EQ(world.slept_us, 0);
}

TEST_F(ModemReset, IsLoggedAtEveryLevel) {
    EXPECT_EQ(LevelsThatLog("Resetting device", ResetDevice), kAlways);
}

TEST_F(ModemReset, DoesNotCareWhetherTheToolIsThere) {
    world.shell_status["ResetPCMCIA now &> /dev/null &"] = 127 * 256;
    ResetDevice();
    EXPECT_EQ(world.log, Lines{"Resetting device"});
}

}  // namespace

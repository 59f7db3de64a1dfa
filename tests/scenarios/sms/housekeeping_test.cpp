// Spool files that nobody collects: thrown away after a day, to the second.
#include <sys/stat.h>

#include "sms_world.h"

using ::testing::SizeIs;

namespace {

constexpr char kMakeReceive[] = "mkdir -p /tmp/sms/recv/";

}  // namespace

TEST(OldSpoolFile, IsLookedForEveryFifteenMinutes) {
    SmsWorld world;
    world.Start();
    world.RunFor(1h);
    const auto times = world.trace.ShellTimes(kMakeReceive);
    ASSERT_THAT(times, SizeIs(4));
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 900s);
        EXPECT_LE(times[i] - times[i - 1], 940s);
    }
    EXPECT_EQ(world.trace.ShellTimes("mkdir -p /tmp/sms/send/").size(), 4u);
    EXPECT_EQ(world.trace.ShellTimes("mkdir -p /tmp/sms/send_fail/").size(), 4u);
}

TEST(OldSpoolFile, FollowsTheWallClockWhereverItJumps) {
    SmsWorld world("-E362");
    world.Drop("msg");
    world.Start();
    world.RunFor(60s);
    world.clock.Jump(-48h);
    world.RunFor(20min);
    EXPECT_FALSE(world.IsGone("msg")) << "a file from the future is kept";
    world.clock.Jump(48h + 25h);
    world.RunFor(60s);
    EXPECT_TRUE(world.IsGone("msg")) << "a clock set forward makes every file old";
}

TEST(SpoolDirectories, AreMadeAndMadeAgain) {
    SmsWorld world;
    world.Start();
    world.RunFor(60s);
    for (const char* folder : {kSend, kFail, kReceive}) EXPECT_TRUE(world.files.Exists(folder));
    world.files.Remove("/tmp/sms");
    world.RunFor(60s);
    EXPECT_TRUE(world.files.Exists(kSend));
    EXPECT_TRUE(world.files.Exists(kFail));
    EXPECT_FALSE(world.files.Exists(kReceive)) << "that one waits for the housekeeping";
    world.RunFor(15min);
    EXPECT_TRUE(world.files.Exists(kReceive));
}

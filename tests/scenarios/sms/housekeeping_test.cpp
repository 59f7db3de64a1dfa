// Spool files that nobody collects: thrown away after a day, to the second.
#include <sys/stat.h>

#include "sms_world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = std::vector<std::string>;

namespace {

constexpr char kMakeReceive[] = "mkdir -p /tmp/sms/recv/";

}  // namespace

TEST(OldSpoolFile, IsKeptForADayAndGoneASecondLater) {
    SmsWorld world("-d");  // a modem without text mode: nothing is sent before it is old
    world.Start();
    world.RunFor(30s);
    for (const char* folder : {"send", "send_fail", "recv"}) {
        SCOPED_TRACE(folder);
        world.ClearTrace();
        const std::string path = std::string("/tmp/sms/") + folder + "/";
        world.WriteFile(path + "day", "TO=1\nMSG=x\n");
        world.WriteFile(path + "more", "TO=1\nMSG=x\n");
        // Right there, no time passes between this line and the look at the files.
        ASSERT_TRUE(world.RunUntilLog("DEBUG: DeleteOldSmSFiles(" + path + "): running", 2min));
        world.SetAge(path + "day", 86400s);
        world.SetAge(path + "more", 86401s);
        world.RunFor(1s);
        EXPECT_TRUE(world.Exists(path + "day"));
        EXPECT_FALSE(world.Exists(path + "more"));
        world.ExpectLogInOrder(
            {"DEBUG: DeleteOldSmSFiles(): Checking age of SMS file more, 86401/86400 seconds",
             "Deleting SMS file '" + path + "more', older than 1440 minutes."});
        EXPECT_EQ(world.CountLog("DEBUG: DeleteOldSmSFiles(): Checking age of SMS file day, "
                                 "86400/86400 seconds"),
                  1u);
        world.RemoveFile(path + "day");
    }
}

TEST(OldSpoolFile, IsLookedForEveryFifteenMinutes) {
    SmsWorld world;
    world.Start();
    world.RunFor(1h);
    const auto times = world.ShellTimes(kMakeReceive);
    ASSERT_THAT(times, SizeIs(4));
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 900s);
        EXPECT_LE(times[i] - times[i - 1], 940s);
    }
    EXPECT_EQ(world.ShellTimes("mkdir -p /tmp/sms/send/").size(), 4u);
    EXPECT_EQ(world.ShellTimes("mkdir -p /tmp/sms/send_fail/").size(), 4u);
}

TEST(OldSpoolFile, IsLookedForAtEveryPassAtAnyDebugLevelButZero) {
    SmsWorld world("-881 -d");
    world.Start();
    world.RunFor(5min);
    const auto passes = world.CommandTimes(kListUnread).size();
    ASSERT_GE(passes, 8u);
    EXPECT_GE(world.ShellTimes(kMakeReceive).size(), passes);
    EXPECT_LE(world.ShellTimes(kMakeReceive).size(), passes + 1);
    EXPECT_EQ(world.CountLog("DEBUG: DeleteOldRecvSmSFiles running"),
              world.ShellTimes(kMakeReceive).size());
}

TEST(OldSpoolFile, GetsANewDayFromAChangeOfItsMode) {
    SmsWorld world;
    world.WriteFile("/tmp/sms/recv/file", "");
    world.SetAge("/tmp/sms/recv/file", 86400s - 10s);
    world.Start();
    ASSERT_EQ(chmod("/tmp/sms/recv/file", 0600), 0);
    world.RunFor(1h);
    EXPECT_TRUE(world.Exists("/tmp/sms/recv/file"));
}

TEST(OldSpoolFile, OfADayAndAnHourIsGoneAtTheFirstPass) {
    SmsWorld world;
    world.WriteFile("/tmp/sms/recv/file", "");
    world.SetAge("/tmp/sms/recv/file", 25h);
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(world.List("/tmp/sms/recv"), IsEmpty());
}

TEST(OldSpoolFile, FollowsTheWallClockWhereverItJumps) {
    SmsWorld world("-E362");
    world.Drop("msg");
    world.Start();
    world.RunFor(60s);
    world.JumpClock(-48h);
    world.RunFor(20min);
    EXPECT_FALSE(world.IsGone("msg")) << "a file from the future is kept";
    world.JumpClock(48h + 25h);
    world.RunFor(60s);
    EXPECT_TRUE(world.IsGone("msg")) << "a clock set forward makes every file old";
}

TEST(SpoolDirectories, AreMadeAndMadeAgain) {
    SmsWorld world;
    world.Start();
    world.RunFor(60s);
    for (const char* folder : {kSend, kFail, kReceive}) EXPECT_TRUE(world.Exists(folder));
    world.RemoveFile("/tmp/sms");
    world.RunFor(60s);
    EXPECT_TRUE(world.Exists(kSend));
    EXPECT_TRUE(world.Exists(kFail));
    EXPECT_FALSE(world.Exists(kReceive)) << "that one waits for the housekeeping";
    world.RunFor(15min);
    EXPECT_TRUE(world.Exists(kReceive));
}

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
        world.trace.Clear();
        const std::string path = std::string("/tmp/sms/") + folder + "/";
        world.files.Write(path + "day", "TO=1\nMSG=x\n");
        world.files.Write(path + "more", "TO=1\nMSG=x\n");
        // Right there, no time passes between this line and the look at the files.
        ASSERT_TRUE(world.RunUntilLog("DEBUG: DeleteOldSmSFiles(" + path + "): running", 2min));
        world.files.SetAge(path + "day", 86400s);
        world.files.SetAge(path + "more", 86401s);
        world.RunFor(1s);
        EXPECT_TRUE(world.files.Exists(path + "day"));
        EXPECT_FALSE(world.files.Exists(path + "more"));
        world.trace.ExpectLogInOrder(
            {"DEBUG: DeleteOldSmSFiles(): Checking age of SMS file more, 86401/86400 seconds",
             "Deleting SMS file '" + path + "more', older than 1440 minutes."});
        EXPECT_EQ(world.trace.CountLog("DEBUG: DeleteOldSmSFiles(): Checking age of SMS file day, "
                                       "86400/86400 seconds"),
                  1u);
        world.files.Remove(path + "day");
    }
}

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

TEST(OldSpoolFile, IsLookedForAtEveryPassAtAnyDebugLevelButZero) {
    SmsWorld world("-881 -d");
    world.Start();
    world.RunFor(5min);
    const auto passes = world.trace.CommandTimes(kListUnread).size();
    ASSERT_GE(passes, 8u);
    EXPECT_GE(world.trace.ShellTimes(kMakeReceive).size(), passes);
    EXPECT_LE(world.trace.ShellTimes(kMakeReceive).size(), passes + 1);
    EXPECT_EQ(world.trace.CountLog("DEBUG: DeleteOldRecvSmSFiles running"),
              world.trace.ShellTimes(kMakeReceive).size());
}

TEST(OldSpoolFile, GetsANewDayFromAChangeOfItsMode) {
    SmsWorld world;
    world.files.Write("/tmp/sms/recv/file", "");
    world.files.SetAge("/tmp/sms/recv/file", 86400s - 10s);
    world.Start();
    ASSERT_EQ(chmod("/tmp/sms/recv/file", 0600), 0);
    world.RunFor(1h);
    EXPECT_TRUE(world.files.Exists("/tmp/sms/recv/file"));
}

TEST(OldSpoolFile, OfADayAndAnHourIsGoneAtTheFirstPass) {
    SmsWorld world;
    world.files.Write("/tmp/sms/recv/file", "");
    world.files.SetAge("/tmp/sms/recv/file", 25h);
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(world.files.List("/tmp/sms/recv"), IsEmpty());
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

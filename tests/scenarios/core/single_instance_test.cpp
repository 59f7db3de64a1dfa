// Two daemons would fight for one port: the pid file decides.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;  // texts with NUL bytes
using rig::Files;
using rig::World;
using Lines = std::vector<std::string>;

constexpr char kPidFile[] = "/var/run/modemd.pid";
constexpr char kWriting[] = "Writing pid 4242 to pidfile '/var/run/modemd.pid'";

TEST(SingleInstance, ASecondCopyEndsAtOnceAndTouchesNothing) {
    World world("-E362");
    world.files.Write(kPidFile, "77");
    world.router.AddProcess(77, "/usr/sbin/modemd\0-E362\0/dev/ttyUSB0\0"s);
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 255);
    EXPECT_EQ(world.trace.Log(),
              (Lines{"v1.45 starting", "Another modemd process is already running, exiting"}));
    EXPECT_EQ(Files::Read(kPidFile), "77");
    EXPECT_TRUE(world.trace.Shell().empty());
    EXPECT_TRUE(world.trace.Commands().empty());
}

struct Stale {
    const char* name;
    std::string text;     // of the pid file
    std::string started;  // command line of process 77; empty: no such process
};

class StalePidFile : public testing::TestWithParam<Stale> {};

TEST_P(StalePidFile, IsOverwritten) {
    World world;
    world.files.Write(kPidFile, GetParam().text);
    if (!GetParam().started.empty()) world.router.AddProcess(77, GetParam().started);
    world.Start();
    world.RunFor(5s);
    EXPECT_EQ(world.trace.Log().at(1), kWriting);
    EXPECT_EQ(Files::Read(kPidFile), "4242");
    EXPECT_FALSE(world.trace.Commands().empty());
}

INSTANTIATE_TEST_SUITE_P(Files, StalePidFile,
                         testing::Values(Stale{"of_a_dead_process", "77", ""},
                                         Stale{"of_another_program", "77", "/sbin/syslogd\0"s},
                                         Stale{"named_in_an_argument", "77", "/bin/vi\0modemd\0"s},
                                         Stale{"with_zero", "0", ""},
                                         Stale{"with_rubbish", "\xff\xfe no number", ""},
                                         Stale{"that_is_empty", "", ""},
                                         Stale{"with_a_long_line", std::string(100000, '7'), ""}),
                         [](const testing::TestParamInfo<Stale>& test) { return test.param.name; });

TEST(SingleInstance, AThreadOfTheKernelHasNoCommandLineAndIsNoCopy) {
    World world;
    world.files.Write(kPidFile, "77");
    world.router.AddProcess(77, "");
    world.Start();
    world.RunFor(1s);
    EXPECT_EQ(world.trace.Log().at(1), kWriting);
}

TEST(SingleInstance, ANameWithinThePathCounts) {
    World world;
    world.files.Write(kPidFile, " 77\n");
    world.router.AddProcess(77, "/opt/modemd-next/bin/other\0"s);
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 255);
}

TEST(SingleInstance, GoesOnSilentlyWhenThePidFileCannotBeWritten) {
    World world;
    world.files.Fail(kPidFile, EACCES);
    world.Start();
    world.RunFor(5s);
    EXPECT_EQ(world.trace.Log().at(1), "file /etc/ssh/ssh_host_dsa_key is present");
    EXPECT_FALSE(world.trace.Commands().empty());
}

}  // namespace

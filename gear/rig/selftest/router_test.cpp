// Files and their times, the kernel's files, the shell, and the private root.

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <memory>

#include "rig/private_root.h"
#include "selftest/sample_world.h"

using namespace rig;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr std::int64_t kStart = 1773479700;

std::string Times(std::int64_t modified, std::int64_t changed) {
    return std::to_string(kStart + modified) + " " + std::to_string(kStart + changed);
}

std::string StatusLine(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(key, 0) == 0) return line.substr(key.size());
    }
    return "";
}

}  // namespace

TEST(FileTimes, OfFilesThatTheStoryWritesAreSimulated) {
    SampleWorld world("looker", "/var/log/file");
    world.files.Write("/var/log/file", "old");
    world.clock.At(90s, [&] { world.files.Write("/var/log/file", "new"); });
    world.clock.At(150s, [&] { world.files.SetAge("/var/log/file", 86400s); });
    world.clock.At(210s, [&] { world.files.Touch("/var/log/file"); });
    world.clock.At(270s, [&] { Files::Remove("/var/log/file"); });
    world.Start();
    world.RunFor(301s);
    EXPECT_THAT(world.trace.Log(),
                ElementsAre(Times(0, 0), Times(0, 0), Times(90, 90),
                            Times(150 - 86400, 150 - 86400), Times(210, 210), "no file"));
}

TEST(FileTimes, OfFilesThatTheProgramWritesAreSimulated) {
    SampleWorld world("writer");
    world.trace.Watch("/var/log/b");
    world.Start();
    EXPECT_EQ(world.RunToExit(1h), 0);
    EXPECT_THAT(world.trace.Log(), ElementsAre("wrote 5", "system 0", Times(60, 60),
                                               Times(120, 180), Times(300, 300), Times(360, 360)));
    ASSERT_THAT(world.trace.Versions("/var/log/b"), ::testing::SizeIs(1));
    EXPECT_EQ(world.trace.Versions("/var/log/b")[0].text, "second");
    EXPECT_EQ(world.trace.Versions("/var/log/b")[0].at, 180000000);
    EXPECT_EQ(Files::Read("/var/log/c"), "third");
    EXPECT_THAT(world.trace.Texts(Kind::kUnlink), ElementsAre("/var/log/a"));
}

TEST(FileTimes, OfFilesThatAShellMakesAreSimulated) {
    SampleWorld world("looker", "/tmp/a b");
    world.clock.At(30s, [&] { world.router.DefaultShell("echo x > \"/tmp/a b\""); });
    world.Start();
    world.RunFor(61s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("no file", Times(30, 30)));
}

// A year of the daemon makes millions of files; of the kernel each look gets a new one.
TEST(FileTimes, OfFilesThatAreGoneTakeNoRoom) {
    SampleWorld world("replacer");
    world.Start();
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_LT(world.files.Known(), 10U);
}

TEST(FileTimes, AreFoundWhenOthersThatStoodInTheirWayAreForgotten) {
    constexpr unsigned kFiles = 3 * rig::FileTimes::kSlots / 4;
    const auto times = std::make_unique<rig::FileTimes>();
    struct stat file = {};
    const auto number = [&file](unsigned inode) -> struct stat& {
        file = {};
        file.st_ino = inode;
        return file;
    };
    for (unsigned inode = 1; inode <= kFiles; ++inode) times->Set(number(inode), inode, inode);
    for (unsigned inode = 1; inode <= kFiles; inode += 2) times->Forget(number(inode));
    times->Forget(number(1));
    EXPECT_EQ(times->Count(), kFiles / 2);
    for (unsigned inode = 1; inode <= kFiles; ++inode) {
        ASSERT_EQ(times->IsAsSeen(number(inode)), inode % 2 == 0) << inode;
    }
}

TEST(KernelFiles, ComeFromTheStory) {
    SampleWorld world("kernel");
    world.router.SetUptime(599500ms);
    world.router.AddProcess(99, std::string("modemd\0-d\0", 10));
    world.router.SetTxBytes([](Duration now) { return now.count() / 1000; });
    world.daemon.SetProcessId(77);
    world.Start();
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_THAT(world.trace.Log(),
                ElementsAre("/proc/uptime 0", "/proc/99 0", "/proc/99/cmdline 0", "/proc/100 -1 2",
                            "/sys/class/net/wwan0/statistics/tx_bytes 0", "599.50 599.50",
                            "numbers 2", "609.500000", "modemd", "10000", "pid 77"));
}

TEST(KernelFiles, CanBeMissing) {
    SampleWorld world("kernel");
    world.router.RemoveUptime();
    world.Start();
    world.RunFor(1s);
    EXPECT_THAT(world.trace.Log(), Contains("/proc/uptime -1 2"));
    EXPECT_THAT(world.trace.Log(), Contains("/sys/class/net/wwan0/statistics/tx_bytes -1 2"));
}

TEST(Interface, HasTheAddressThatTheStorySays) {
    SampleWorld world("address");
    world.clock.At(5s, [&] { world.router.SetAddress("10.64.0.2"); });
    world.clock.At(15s, [&] { world.router.ClearAddress(); });
    world.clock.At(25s, [&] { world.router.FailSockets(EMFILE, 1); });
    world.Start();
    world.RunFor(35s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("none 99", "10.64.0.2", "none 99", "none 24"));
}

TEST(Shell, DoesWhatTheDaemonsLinesSay) {
    struct Row {
        const char* line;
        const char* status;
        const char* file;  // that is there afterwards
    };
    const Row rows[] = {
        {"mkdir -p /tmp/sms/send/ /tmp/sms/recv/", "system 0", "/tmp/sms/recv"},
        {"touch /var/log/marker", "system 0", "/var/log/marker"},
        {"touch /nowhere/marker", "system 256", "/var/log/old"},
        {"mv -f /var/log/old /tmp/new", "system 0", "/tmp/new"},
        {"mv -f /var/log/none /tmp/new", "system 256", "/var/log/old"},
        {"mv -f '/var/log/old' '/tmp/it'\\''s new'", "system 0", "/tmp/it's new"},
        {"/bin/echo -n  > /var/log/lightbar", "system 0", "/var/log/lightbar"},
        {"/bin/rm -f /var/log/wireless.*", "system 0", "/var/log/old"},
        {"exit 9", "system 2304", "/var/log/old"},
        {"ifconfig wwan0 0.0.0.0 up &> /dev/null", "system 0", "/var/log/old"},
        {"kill `cat /var/run/x 2> /dev/null` &> /dev/null", "system 0", "/var/log/old"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        SampleWorld world("shell", row.line);
        world.files.Write("/var/log/old", "");
        world.files.Write("/var/log/wireless.x", "");
        world.Start();
        world.RunFor(1s);
        EXPECT_THAT(world.trace.Shell(), ElementsAre(row.line));
        EXPECT_THAT(world.trace.Log(), ElementsAre(row.status));
        EXPECT_TRUE(Files::Exists(row.file));
        EXPECT_EQ(Files::Exists("/var/log/wireless.x"), row.line[5] != 'r');
    }
}

TEST(Shell, IsPlayedByTheStoryWhereItWants) {
    SampleWorld world("shell", "udhcpc -i wwan0");
    world.router.SetShellStatus("udhcpc", 1);
    world.Start();
    world.RunFor(1s);
    world.router.OnShell("udhcpc -i", [&](const std::string&) {
        world.router.SetAddress("10.0.0.1");
        world.router.TakeTime(5s);
        return 2;
    });
    world.RunFor(30s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("system 256", "system 512", "system 512"));
    EXPECT_EQ(world.trace.LogTimes("system 512"), (std::vector<Duration>{15s, 30s}));
}

TEST(Paths, FailWhereTheStoryWants) {
    SampleWorld world("faults");
    world.files.Fail("/var/log/x", EACCES);
    world.files.Fail("/var/log", ENOTDIR);
    world.files.MountSmall("/tmp/small", 8192);
    world.files.MountReadOnly("/tmp/fixed");
    world.Start();
    world.RunFor(1s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("open -1 13", "fopen fails", "opendir fails", "full",
                                               "read-only -1 30"));
}

TEST(PrivateRoot, IsEmptyAtEachStart) {
    {
        SampleWorld world("nothing");
        world.files.Write("/var/log/left", "x");
        world.files.Write("/tmp/deep/left", "x");
        world.files.Write("/etc/kvt/wireless/left", "x");
        world.files.MountSmall("/tmp/mounted", 8192);
        world.files.Write("/tmp/mounted/left", "x");
    }
    SampleWorld world("nothing");
    EXPECT_THAT(Files::List("/var/log"), IsEmpty());
    EXPECT_THAT(Files::List("/var/run"), IsEmpty());
    EXPECT_THAT(Files::List("/tmp"), Not(Contains("deep")));
    EXPECT_THAT(Files::List("/tmp"), Not(Contains("mounted")));
    EXPECT_THAT(Files::List("/etc/kvt"), IsEmpty());
    EXPECT_THAT(Files::List("/etc/ssh"), ElementsAre("ssh_host_dsa_key"));
}

TEST(PrivateRoot, CannotReachTheClockOrTheNetwork) {
    constexpr unsigned long long kSetTime = 1ULL << 25;  // CAP_SYS_TIME
    EXPECT_TRUE(InPrivateRoot());
    for (const char* set : {"CapEff:", "CapPrm:", "CapInh:", "CapBnd:"}) {
        const std::string bits = StatusLine(set);
        ASSERT_FALSE(bits.empty()) << set;
        EXPECT_EQ(std::stoull(bits, nullptr, 16) & kSetTime, 0U) << set;
    }
    std::ifstream devices("/proc/self/net/dev");
    int interfaces = 0;
    for (std::string line; std::getline(devices, line);) {
        if (line.find(':') == std::string::npos) continue;
        ++interfaces;
        EXPECT_NE(line.find("lo:"), std::string::npos) << line;
    }
    EXPECT_LE(interfaces, 1);
}

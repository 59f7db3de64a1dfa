// What somebody may put into the spool to hang, fill, fool or misuse the daemon.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "sms_world.h"

using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = std::vector<std::string>;

namespace {

// The daemon still does its work.
void ExpectAlive(SmsWorld& world) {
    const auto before = world.trace.CommandTimes(kListUnread).size();
    world.RunFor(60s);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_GT(world.trace.CommandTimes(kListUnread).size(), before);
}

}  // namespace

TEST(HostileNames, AreSentLikeAnyOther) {
    SmsWorld world;
    world.Drop("$(reboot) 'x'\n");
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("$(reboot) 'x'\n", 60s));
    EXPECT_EQ(world.Sent(), Lines{"Hello\n\n"});
}

TEST(HostileFiles, OfEveryTypeAreThrownAwayWithoutHoldingTheDaemonUp) {
    struct Case {
        const char* what;
        std::function<void(const char*)> make;
        const char* reason;
    };
    constexpr char kNoMessage[] =
        "SMS send file /tmp/sms/send/bad is invalid, does not contain a 'MSG=' field.";
    constexpr char kNotOpened[] = "Cannot open SMS file /tmp/sms/send/bad";
    for (const Case& c :
         {Case{"an empty file", [](const char* path) { std::ofstream stream(path); }, kNoMessage},
          Case{"a FIFO", [](const char* path) { ASSERT_EQ(mkfifo(path, 0666), 0); }, kNoMessage},
          Case{"a socket",
               [](const char* path) {
                   const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
                   sockaddr_un address = {};
                   address.sun_family = AF_UNIX;
                   std::string(path).copy(address.sun_path, sizeof(address.sun_path) - 1);
                   EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
                             0);
                   close(fd);
               },
               kNotOpened},
          Case{"a link to a device without end",
               [](const char* path) { std::filesystem::create_symlink("/dev/zero", path); },
               kNoMessage},
          Case{"a link to a terminal",
               [](const char* path) { std::filesystem::create_symlink("/dev/tty", path); },
               kNoMessage},
          Case{"a dangling link",
               [](const char* path) { std::filesystem::create_symlink("/none", path); },
               kNotOpened},
          Case{"a link to itself",
               [](const char* path) { std::filesystem::create_symlink("bad", path); }, kNotOpened},
          Case{"a link to a directory",
               [](const char* path) { std::filesystem::create_symlink("/etc", path); }, kNoMessage},
          Case{"noise", [](const char* path) { std::ofstream(path) << "\xff\x01=\n==\n\n#"; },
               kNoMessage}}) {
        SCOPED_TRACE(c.what);
        SmsWorld world;
        std::filesystem::create_directories(kSend);
        c.make("/tmp/sms/send/bad");
        world.Start();
        EXPECT_TRUE(world.RunUntilGone("bad", 60s));
        world.RunFor(1s);
        world.trace.ExpectLogInOrder({"Reading SMS File /tmp/sms/send/bad", c.reason,
                                      "SMS send file /tmp/sms/send/bad is invalid, deleting"});
        EXPECT_THAT(world.Sent(), IsEmpty());
        EXPECT_TRUE(world.files.Exists("/etc")) << "only the link goes";
        ExpectAlive(world);
    }
}

TEST(HostileFiles, ThatVanishBetweenListingAndReadingAreNoTrouble) {
    SmsWorld world;
    world.Drop("bad");
    world.Start();
    EXPECT_TRUE(world.RunUntilLog("Reading SMS File /tmp/sms/send/bad", 60s));
    world.files.Remove("/tmp/sms/send/bad");
    world.RunFor(1s);
    world.trace.ExpectLogInOrder({"Cannot open SMS file /tmp/sms/send/bad",
                                  "SMS send file /tmp/sms/send/bad is invalid, deleting"});
    ExpectAlive(world);
}

TEST(HostileFiles, AGigabyteCostsNoMemory) {
    SmsWorld world;
    world.Start();
    world.RunFor(40s);
    const long before = SmsWorld::PeakMemory();
    world.Drop("zeros");
    ASSERT_EQ(truncate("/tmp/sms/send/zeros", 1L << 30), 0);
    EXPECT_TRUE(world.RunUntilGone("zeros", 60s));
    EXPECT_LT(SmsWorld::PeakMemory() - before, 8192) << "KiB";
    ASSERT_THAT(world.Sent(), SizeIs(1));
    EXPECT_EQ(world.Sent()[0].substr(0, 5), "Hello");
    EXPECT_LE(world.Sent()[0].size(), 150u);
}

TEST(HostileFiles, ADirectoryIsReportedAtEveryPassAndStays) {
    SmsWorld world;
    std::filesystem::create_directories("/tmp/sms/send/sub");
    world.Start();
    world.RunFor(3min);
    EXPECT_TRUE(world.files.Exists("/tmp/sms/send/sub"));
    EXPECT_EQ(world.trace.CountLog("SMS send file /tmp/sms/send/sub is invalid, deleting"),
              world.trace.ShellTimes(kMakeSend).size());
    world.Drop("msg");
    const bool sub_is_first = SmsWorld::FirstListed() == "sub";
    world.RunFor(60s);
    EXPECT_EQ(world.IsGone("msg"), !sub_is_first) << "what is listed before it is sent";
    world.files.Remove("/tmp/sms/send/sub");
    world.RunFor(60s);
    EXPECT_TRUE(world.IsGone("msg"));
}

TEST(HostileFiles, AHundredThousandAreServedOneByOne) {
    SmsWorld world;
    world.Start();
    world.RunFor(40s);
    const long before = SmsWorld::PeakMemory();
    for (int i = 0; i < 100000; ++i) {
        std::ofstream(kSend + ("file" + std::to_string(i))) << "TO=1\nMSG=" << i << "\n";
    }
    world.RunFor(60s);
    EXPECT_GE(world.Sent().size(), 2u);
    EXPECT_LE(world.Sent().size(), 4u);
    EXPECT_LT(SmsWorld::PeakMemory() - before, 65536) << "KiB, for the names alone";
    ExpectAlive(world);
}

TEST(HostileSpool, OnAFullFileSystemCostsTheFileNotTheDaemon) {
    SmsWorld world;
    std::filesystem::create_directories(kReceive);
    world.files.MountSmall("/tmp/sms/recv", 4096);
    std::ofstream(kReceive + std::string("filler")) << std::string(4096, 'x');
    world.Arrive("+15551234567", "Hello");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CountLogContaining("Got SMS from 15551234567"), 1u);
    std::filesystem::remove("/tmp/sms/recv/filler");
    world.Arrive("+15551234567", "Again");
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CountLogContaining("Message: Again\n"), 1u);
    EXPECT_THAT(SmsWorld::Received(), Contains(EndsWith("\nMSG=Again\n")));
}

// The file cannot be deleted, so it goes out again: what docs/sms.md warns of.
TEST(HostileSpool, ThatIsReadOnlySendsAFileAtEveryPass) {
    SmsWorld world;
    world.files.MountSmall("/tmp/sms/send", 1 << 16);
    world.Drop("msg");
    ASSERT_EQ(mount(nullptr, "/tmp/sms/send", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    world.Start();
    world.RunFor(90s);
    EXPECT_GE(world.Sent().size(), 3u);
    EXPECT_FALSE(world.IsGone("msg"));
    ExpectAlive(world);
}

TEST(PlantedLinks, ThatAppearDuringASendingAreNotDeletedThrough) {
    SmsWorld world;
    world.Drop("passwd");
    world.Start();
    ASSERT_TRUE(world.RunUntilCommand("AT+CMGS=\"+15551234567\"", 60s));
    std::filesystem::rename("/tmp/sms/send", "/tmp/elsewhere");
    std::filesystem::create_symlink("/tmp/elsewhere", "/tmp/sms/send");
    const bool foreign = lchown("/tmp/sms/send", 12345, 12345) == 0;
    world.RunFor(5s);
    EXPECT_EQ(world.trace.CountLogContaining("Send Success"), 1u);
    EXPECT_EQ(world.files.Exists("/tmp/elsewhere/passwd"), foreign);
}

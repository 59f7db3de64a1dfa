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

// Shells are started in the private /tmp, where a name that gets through may do its harm.
struct StayInTmp {
    StayInTmp() { std::filesystem::current_path("/tmp"); }
    ~StayInTmp() { std::filesystem::current_path(before); }
    const std::filesystem::path before = std::filesystem::current_path();
};

// The daemon still does its work.
void ExpectAlive(SmsWorld& world) {
    const auto before = world.trace.CommandTimes(kListUnread).size();
    world.RunFor(60s);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_GT(world.trace.CommandTimes(kListUnread).size(), before);
}

}  // namespace

TEST(HostileNames, AreOneWordToTheShell) {
    const Lines names = {"two words",
                         " leading and trailing ",
                         "it's",
                         "'''",
                         "\"double\"",
                         "$(touch pwned)",
                         "`touch pwned`",
                         "a;touch pwned",
                         "a&touch pwned&",
                         "a|touch pwned",
                         "a>pwned",
                         "-rf",
                         "--help",
                         "*",
                         "?",
                         "~",
                         "$HOME",
                         "back\\slash",
                         "two\nlines",
                         "\n",
                         "\ttab",
                         "\x01\x1b[31m\x7f",
                         "\xff\xfe\xc3",
                         "gr\xc3\xbc\xc3\x9f"
                         "e",
                         "%s%n%s",
                         "#comment",
                         "!history",
                         "{a,b}"};
    SmsWorld world;
    world.LetTheModemRefuse();
    const StayInTmp here;
    world.Start();
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        world.Drop(name);
        ASSERT_TRUE(world.RunUntilGone(name, 5min));
        const std::string failed = name + "." + world.Stamp();
        EXPECT_EQ(world.files.Read(kFail + failed), "TO=+15551234567\nMSG=Hello\n");
        EXPECT_THAT(world.files.List("/tmp/sms/send_fail"), SizeIs(1));
        world.files.Remove(kFail + failed);
    }
    EXPECT_FALSE(world.files.Exists("/tmp/pwned"));
}

TEST(HostileNames, OfTheFullLengthKeepRoomForTheTimeStamp) {
    for (const std::string& name : {std::string(255, 'n'), std::string(253, 'q') + "$$"}) {
        SmsWorld world;
        world.LetTheModemRefuse();
        world.Drop(name);
        world.Start();
        ASSERT_TRUE(world.RunUntilGone(name, 5min));
        const std::string failed = name.substr(0, 239) + "." + world.Stamp();
        EXPECT_EQ(world.files.Read(kFail + failed), "TO=+15551234567\nMSG=Hello\n");
    }
}

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

TEST(HostileFiles, AFifoThatSomebodyFeedsIsNotRead) {
    SmsWorld world;
    std::filesystem::create_directories(kSend);
    ASSERT_EQ(mkfifo("/tmp/sms/send/bad", 0666), 0);
    const int fd = open("/tmp/sms/send/bad", O_RDWR | O_NONBLOCK);
    ASSERT_EQ(write(fd, "TO=1\nMSG=x\n", 11), 11);
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("bad", 60s));
    EXPECT_THAT(world.Sent(), IsEmpty());
    close(fd);
}

TEST(HostileFiles, ThatCannotBeReadAreDeleted) {
    SmsWorld world;
    world.Drop("bad");
    world.files.Fail("/tmp/sms/send/bad", EACCES);
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("bad", 60s));
    EXPECT_EQ(world.trace.CountLog("Cannot open SMS file /tmp/sms/send/bad"), 1u);
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

TEST(HostileFiles, ZeroBytesAreSentAsTheyStand) {
    SmsWorld world;
    world.Drop("msg", std::string("TO=1\nMSG=a\0b\n", 13));
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("msg", 60s));
    const auto writes = world.trace.Texts(rig::Kind::kWrite);
    EXPECT_THAT(writes, Contains(std::string("a\0b\n\n\x1a", 6)));
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

TEST(HostileSpool, ThatIsAFileIsLeftAlone) {
    SmsWorld world;
    world.files.Write("/tmp/sms", "not a directory");
    world.Arrive("+15551234567", "Hello");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.files.Read("/tmp/sms"), "not a directory");
    EXPECT_EQ(world.trace.CountLogContaining("Got SMS from 15551234567"), 1u)
        << "the log still has it";
    ExpectAlive(world);
}

TEST(HostileSpool, WhoseSendDirectoryIsAFileStillReceives) {
    SmsWorld world;
    world.files.Write("/tmp/sms/send", "not a directory");
    world.Arrive("+15551234567", "Hello");
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(SmsWorld::Received(), SizeIs(1));
    EXPECT_EQ(world.files.Read("/tmp/sms/send"), "not a directory");
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

TEST(HostileSpool, ThatIsReadOnlyToReceiveStillLogsEveryMessage) {
    SmsWorld world;
    std::filesystem::create_directories(kReceive);
    world.files.MountReadOnly("/tmp/sms/recv");
    world.Arrive("+15551234567", "Hello");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CountLogContaining("Message: Hello\n"), 1u);
    EXPECT_THAT(world.files.List("/tmp/sms/recv"), IsEmpty());
}

TEST(PlantedLinks, InAReceivedFilesPlaceAreRemovedAndNotFollowed) {
    for (const bool hard : {false, true}) {
        SCOPED_TRACE(hard ? "hard link" : "symbolic link");
        SmsWorld world;
        world.files.Write("/tmp/precious", "keep me");
        world.modem.AnswerOnce(
            kListUnread, "\r\n+CMGL: 1,\"REC UNREAD\",\"+1\",,\"d,t\"\r\nHello\r\n\r\nOK\r\n");
        world.Start();
        ASSERT_TRUE(world.RunUntilLog("Got SMS from 1 at d-t, Message: Hello\n", 60s));
        const std::string path = kReceive + ("sms_msg" + world.Stamp() + ".1");
        if (hard) {
            std::filesystem::create_hard_link("/tmp/precious", path);
        } else {
            std::filesystem::create_symlink("/tmp/precious", path);
        }
        world.RunFor(1s);
        EXPECT_EQ(world.files.Read("/tmp/precious"), "keep me");
        EXPECT_EQ(world.files.Read(path), "FROM=1\nTIME=d-t\nMSG=Hello\n");
        EXPECT_FALSE(std::filesystem::is_symlink(path));
    }
}

TEST(PlantedLinks, InAFailedFilesPlaceDoNotLeadItOut) {
    SmsWorld world;
    world.LetTheModemRefuse();
    world.Drop("msg");
    world.Start();
    ASSERT_TRUE(
        world.RunUntilLog("Send #3 Failed : TO=+15551234567, MSG=Hello\n\n (truncated)", 5min));
    const std::string failed = kFail + ("msg." + world.Stamp());
    std::filesystem::create_directory("/tmp/elsewhere");
    std::filesystem::create_symlink("/tmp/elsewhere", failed);
    world.RunFor(1s);
    EXPECT_TRUE(std::filesystem::is_empty("/tmp/elsewhere"));
    EXPECT_FALSE(std::filesystem::is_symlink(failed));
    EXPECT_EQ(world.files.Read(failed), "TO=+15551234567\nMSG=Hello\n");
}

// A normal user cannot give a link away: there it is the daemon's own, which is used.
TEST(PlantedLinks, InASpoolDirectorysPlaceAreRefusedUnlessTheyAreOurOwn) {
    SmsWorld world;
    std::filesystem::create_directory("/tmp/elsewhere");
    std::filesystem::create_symlink("/tmp/elsewhere", "/tmp/sms");
    const bool foreign = lchown("/tmp/sms", 12345, 12345) == 0;
    world.Arrive("+15551234567", "Hello");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(std::filesystem::is_empty("/tmp/elsewhere"), foreign);
    EXPECT_EQ(world.trace.CountLogContaining("is a link that somebody else made, not using it") > 0,
              foreign);
    EXPECT_EQ(world.trace.CountLogContaining("Message: Hello\n"), 1u);
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

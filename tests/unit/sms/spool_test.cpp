#include "sms/spool.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <set>

#include "sms/spool_fixture.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

using Lines = std::vector<std::string>;

class SendFile : public SpoolTest {
  protected:
    bool Read(const std::string& text) {
        PutToSend("file", text);
        return ReadSmsSendFile(path_, to_, message_);
    }

    const std::string path_ = "/tmp/sms/send/file";
    std::string to_ = "as passed in";
    std::string message_;
};

TEST_F(SendFile, HasANumberWithoutBlanksAndAMessageWithItsLastCharacterTwice) {
    struct Case {
        const char* text;
        const char* to;
        const char* message;
    };
    for (const Case& c :
         {Case{"TO=+1 555 123\nMSG=Hello\n", "+1555123", "Hello\n\n"},
          Case{"TO=1\nMSG=one\n\n  two \r\nthree\n", "1", "one\n\n  two \r\nthree\n\n"},
          Case{"MSG=Hi\nTO=123\n", "123", "Hi\nTO=123\n\n"},  // all behind the label
          Case{"MSG=Hi\nTO=123", "1233", "Hi\nTO=1233"},
          Case{"TO=1\n# no MSG=yes\n", "1", "yes\n\n"},
          Case{"TO=1\nMSG=a MSG=b\n", "1", "a MSG=b\n\n"}}) {
        SCOPED_TRACE(c.text);
        EXPECT_TRUE(Read(c.text));
        EXPECT_EQ(to_, c.to);
        EXPECT_EQ(message_, c.message);
        EXPECT_EQ(world.log, Lines{});
    }
}

TEST_F(SendFile, RepeatsTheLastLetterOfAMessageWithoutLineEnd) {
    EXPECT_TRUE(Read("TO=1\nMSG=Hello"));
    EXPECT_EQ(message_, "Helloo");
}

TEST_F(SendFile, IsInvalidWithoutAMessage) {
    EXPECT_FALSE(Read("TO=123\nmsg=Hi\n"));
    EXPECT_EQ(to_, "123");
    EXPECT_EQ(world.log, Lines{"SMS send file /tmp/sms/send/file is invalid, does not contain a "
                               "'MSG=' field."});
    EXPECT_EQ(world.log_priorities, std::vector<int>{5});
}

TEST_F(SendFile, IsUsableWithoutANumber) {
    EXPECT_TRUE(Read("MSG=Hi\n"));
    EXPECT_EQ(to_, "as passed in");
    EXPECT_EQ(message_, "Hi\n\n");
    EXPECT_EQ(world.log, Lines{"SMS send file /tmp/sms/send/file is invalid, does not contain a "
                               "'TO' field."});
}

TEST_F(SendFile, ReportsBothMissingFieldsNumberFirst) {
    EXPECT_FALSE(Read("nothing\n"));
    EXPECT_EQ(world.log,
              (Lines{"SMS send file /tmp/sms/send/file is invalid, does not contain a 'TO' field.",
                     "SMS send file /tmp/sms/send/file is invalid, does not contain a 'MSG=' "
                     "field."}));
}

TEST_F(SendFile, ReadsTheNumberByTheRulesOfTableFiles) {
    struct Case {
        const char* text;
        const char* to;
    };
    for (const Case& c : {Case{"TO=1\nTO=2\nMSG=x\n", "1"},             // the first entry
                          Case{"#TO=1\n\n  \t\nTO=2\nMSG=x\n", "2"},    // comments and blank lines
                          Case{"  TO  = \t1 2\t3 \r\nMSG=x\n", "123"},  // white space goes
                          Case{"to=1\nTo=2\nTO=3\nMSG=x\n", "3"},       // labels have a case
                          Case{"TO=4=5\nMSG=x\n", "4"},                 // one field, not the rest
                          Case{"TO==6\nMSG=x\n", "6"},                  // empty fields move out
                          Case{"TO=\nMSG=x\n", ""},                     // there, but empty
                          Case{"TO\nMSG=x\n", ""},                      // no separator at all
                          Case{"TO\nTO=7\nMSG=x\n", ""},                // even so, the first entry
                          Case{"TO=\"8\"'`$(9)\nMSG=x\n", "\"8\"'`$(9)"}}) {  // nothing is quoted
        SCOPED_TRACE(c.text);
        to_ = "untouched";
        EXPECT_TRUE(Read(c.text));
        EXPECT_EQ(to_, c.to);
        EXPECT_EQ(world.log, Lines{});
    }
}

TEST_F(SendFile, ThatCannotBeOpenedIsReported) {
    EXPECT_FALSE(ReadSmsSendFile("/tmp/sms/send/gone", to_, message_));
    EXPECT_EQ(world.log, Lines{"Cannot open SMS file /tmp/sms/send/gone"});
    EXPECT_EQ(to_, "as passed in");
}

TEST_F(SendFile, KeepsZeroBytes) {
    EXPECT_TRUE(Read(std::string("TO=1\nMSG=a\0b\n", 13)));
    EXPECT_EQ(message_, std::string("a\0b\n\n", 5));
}

TEST_F(SendFile, IsNotReadBeyondItsFirst64Kilobytes) {
    EXPECT_TRUE(Read("TO=1\nMSG=" + std::string(300000, 'x') + "\nTO=2\n"));
    EXPECT_EQ(to_, "1");
    EXPECT_LE(message_.size(), 70000u);
    EXPECT_GE(message_.size(), 65000u);
}

TEST_F(SendFile, OfAGigabyteOfZerosIsInvalid) {
    PutToSend("file", "");
    ASSERT_EQ(truncate(Real(path_).c_str(), 1L << 30), 0);
    EXPECT_FALSE(ReadSmsSendFile(path_, to_, message_));
    EXPECT_TRUE(message_.empty());
}

TEST_F(SendFile, ThatIsEmptyADirectoryOrAFifoReadsAsEmpty) {
    PutToSend("empty", "");
    std::filesystem::create_directory(Real("/tmp/sms/send/directory"));
    ASSERT_EQ(mkfifo(Real("/tmp/sms/send/fifo").c_str(), 0600), 0);
    Link("/dev/zero", "/tmp/sms/send/device");
    for (const char* name : {"empty", "directory", "fifo", "device"}) {
        SCOPED_TRACE(name);
        world.log.clear();
        const std::string path = std::string("/tmp/sms/send/") + name;
        EXPECT_FALSE(ReadSmsSendFile(path, to_, message_));
        EXPECT_EQ(world.log,
                  (Lines{"SMS send file " + path + " is invalid, does not contain a 'TO' field.",
                         "SMS send file " + path +
                             " is invalid, does not contain a 'MSG=' "
                             "field."}));
    }
}

TEST_F(SendFile, ThatIsAFifoIsNotReadEvenWhenSomebodyFillsIt) {
    ASSERT_EQ(mkfifo(Real(path_).c_str(), 0600), 0);
    const int fd = open(Real(path_).c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_EQ(write(fd, "TO=1\nMSG=x\n", 11), 11);
    EXPECT_FALSE(ReadSmsSendFile(path_, to_, message_));
    close(fd);
}

TEST_F(SendFile, ThatIsASocketOrADanglingLinkCannotBeOpened) {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    Real("/tmp/sms/send/socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    Link("/nowhere/at/all", "/tmp/sms/send/link");
    for (const char* name : {"socket", "link"}) {
        SCOPED_TRACE(name);
        world.log.clear();
        const std::string path = std::string("/tmp/sms/send/") + name;
        EXPECT_FALSE(ReadSmsSendFile(path, to_, message_));
        EXPECT_EQ(world.log, Lines{"Cannot open SMS file " + path});
    }
    close(fd);
}

class Listing : public SpoolTest {
  protected:
    // Appends every name; returns what the listing returns.
    static int ReadAllNames(const std::string& directory, Lines& names) {
        return ReadSmsDirectory(directory, [&](const std::string& name) {
            names.push_back(name);
            return true;
        });
    }
};

TEST_F(Listing, VisitsEveryEntryOfWhateverTypeButTheTwoDots) {
    PutToSend("b", "");
    PutToSend(".hidden", "");
    PutToSend("...", "");
    std::filesystem::create_directory(Real("/tmp/sms/send/directory"));
    Link("nowhere", "/tmp/sms/send/link");
    Lines names = {"kept"};
    EXPECT_EQ(ReadAllNames(kSmsSendDirectory, names), 0);
    Lines expected = Names(kSmsSendDirectory);  // the system's own order
    EXPECT_EQ(expected.size(), 5u);
    expected.insert(expected.begin(), "kept");
    EXPECT_EQ(names, expected);
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(Listing, EndsWhereTheVisitorHasEnough) {
    PutToSend("a", "");
    PutToSend("b", "");
    Lines visited;
    EXPECT_EQ(ReadSmsDirectory(kSmsSendDirectory,
                               [&](const std::string& name) {
                                   visited.push_back(name);
                                   return false;
                               }),
              0);
    EXPECT_EQ(visited, Lines{Names(kSmsSendDirectory).front()});
}

TEST_F(Listing, VisitsEachEntryOnceThoughItIsDeletedMeanwhile) {
    for (int i = 0; i < 3000; ++i) PutToSend("message." + std::to_string(i), "");
    std::set<std::string> visited;
    int visits = 0;
    ReadSmsDirectory(kSmsSendDirectory, [&](const std::string& name) {
        DeleteSpoolFile(kSmsSendDirectory, name);
        visited.insert(name);
        ++visits;
        return true;
    });
    EXPECT_EQ(visits, 3000);
    EXPECT_EQ(visited.size(), 3000u);
    EXPECT_EQ(Names(kSmsSendDirectory), Lines{});
}

TEST_F(Listing, OfAMissingDirectoryGivesItsErrnoAndIsSilent) {
    Lines names;
    EXPECT_EQ(ReadAllNames("/tmp/sms/none/", names), ENOENT);
    EXPECT_EQ(names, Lines{});
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(Listing, OfAFileNamesTheErrnoAtDebugLevelOne) {
    g_i_DebugLevel = 1;
    Put("/tmp/sms/file", "");
    Lines names;
    EXPECT_EQ(ReadAllNames("/tmp/sms/file", names), ENOTDIR);
    EXPECT_EQ(world.log, Lines{"DEBUG: Error opening SMS read directory /tmp/sms/file, errno 20"});
}

TEST_F(Listing, IsSilentAboutFailuresAtANegativeDebugLevel) {
    g_i_DebugLevel = -1;
    Lines names;
    EXPECT_EQ(ReadAllNames("/tmp/sms/none/", names), ENOENT);
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(Listing, ThroughSomebodysLinkIsRefused) {
    std::filesystem::rename(Real("/tmp/sms"), Real("/tmp/sms-elsewhere"));
    Link("sms-elsewhere", "/tmp/sms");
    Lines names;
    EXPECT_EQ(ReadAllNames(kSmsSendDirectory, names), 0) << "a link of our own is fine";
    GiveToSomebody("/tmp/sms");
    EXPECT_EQ(ReadAllNames(kSmsSendDirectory, names), ELOOP);
    EXPECT_EQ(world.log,
              Lines{"SMS directory /tmp/sms is a link that somebody else made, not using it"});
}

TEST_F(Listing, LooksAtEveryElementOfThePath) {
    RemoveDirectory("/tmp/sms/send");
    Link("recv", "/tmp/sms/send");
    GiveToSomebody("/tmp/sms/send");
    EXPECT_FALSE(IsSafeSpoolPath(kSmsSendDirectory));
    EXPECT_TRUE(IsSafeSpoolPath(kSmsReceiveDirectory));
    EXPECT_TRUE(IsSafeSpoolPath("/tmp/sms/not-there/"));
}

TEST_F(Listing, TakesADirectoryOfSomebodyElse) {
    GiveToSomebody("/tmp/sms");
    GiveToSomebody("/tmp/sms/send");
    EXPECT_TRUE(IsSafeSpoolPath(kSmsSendDirectory));
}

TEST_F(Listing, NoDirectoryIsMadeBehindSomebodysLink) {
    MakeSpoolDirectories({kSmsSendDirectory, kSmsFailDirectory});
    EXPECT_EQ(world.shell, Lines{"mkdir -p /tmp/sms/send/ /tmp/sms/send_fail/"});
    RemoveDirectory("/tmp/sms/send_fail");
    Link("/etc", "/tmp/sms/send_fail");
    GiveToSomebody("/tmp/sms/send_fail");
    world.shell.clear();
    MakeSpoolDirectories({kSmsSendDirectory, kSmsFailDirectory});
    EXPECT_EQ(world.shell, Lines{});
}

TEST_F(Listing, NothingIsDeletedBehindALinkThatAppearedSince) {
    PutToSend("passwd", "root");
    std::filesystem::rename(Real("/tmp/sms/send"), Real("/tmp/sms/etc"));
    Link("etc", "/tmp/sms/send");
    GiveToSomebody("/tmp/sms/send");
    DeleteSpoolFile(kSmsSendDirectory, "passwd");
    EXPECT_TRUE(Exists("/tmp/sms/etc/passwd"));
}

using Ageing = SpoolTest;

TEST_F(Ageing, KeepsAFileForADayAndNotASecondLonger) {
    for (const char* directory : {kSmsSendDirectory, kSmsFailDirectory, kSmsReceiveDirectory}) {
        const std::string day = std::string(directory) + "day";
        const std::string more = std::string(directory) + "more";
        Put(day, "");
        Put(more, "");
        SetAge(day, 86400);
        SetAge(more, 86401);
        world.log.clear();
        DeleteOldSmSFiles(directory);
        EXPECT_TRUE(Exists(day));
        EXPECT_FALSE(Exists(more));
        EXPECT_EQ(world.log, Lines{"Deleting SMS file '" + more + "', older than 1440 minutes."});
    }
    EXPECT_EQ(world.shell, (Lines{"mkdir -p /tmp/sms/send/", "mkdir -p /tmp/sms/send_fail/",
                                  "mkdir -p /tmp/sms/recv/"}));
}

TEST_F(Ageing, KeepsAFileFromTheFuture) {
    PutToSend("file", "");
    SetAge("/tmp/sms/send/file", -400000000);
    DeleteOldSmSFiles(kSmsSendDirectory);
    EXPECT_TRUE(Exists("/tmp/sms/send/file"));
}

TEST_F(Ageing, GoesByTheChangeOfStatusNotOfContent) {
    PutToSend("file", "");
    const auto long_ago = std::filesystem::file_time_type::clock::now() - std::chrono::hours(999);
    std::filesystem::last_write_time(Real("/tmp/sms/send/file"), long_ago);
    SetAge("/tmp/sms/send/file", 10);
    DeleteOldSmSFiles(kSmsSendDirectory);
    EXPECT_TRUE(Exists("/tmp/sms/send/file"));
}

TEST_F(Ageing, TakesADanglingLinkForAncientAndRemovesTheLinkOnly) {
    Link("/nowhere/at/all", "/tmp/sms/recv/link");
    Put("/tmp/sms/target", "precious");
    Link(Real("/tmp/sms/target"), "/tmp/sms/recv/old");
    SetAge("/tmp/sms/recv/old", 86401);
    DeleteOldSmSFiles(kSmsReceiveDirectory);
    EXPECT_EQ(Names(kSmsReceiveDirectory), Lines{});
    EXPECT_EQ(Content("/tmp/sms/target"), "precious");
}

TEST_F(Ageing, SaysThatItDeletesADirectoryAndFails) {
    std::filesystem::create_directory(Real("/tmp/sms/recv/sub"));
    SetAge("/tmp/sms/recv/sub", 90000);
    DeleteOldSmSFiles(kSmsReceiveDirectory);
    EXPECT_EQ(world.log, Lines{"Deleting SMS file '/tmp/sms/recv/sub', older than 1440 minutes."});
    EXPECT_TRUE(Exists("/tmp/sms/recv/sub"));
}

TEST_F(Ageing, TellsWhatItDoesAtDebugLevelOne) {
    g_i_DebugLevel = 1;
    Put("/tmp/sms/recv/file", "");
    SetAge("/tmp/sms/recv/file", 86401);
    DeleteOldRecvSmSFiles();
    EXPECT_EQ(world.log,
              (Lines{"DEBUG: DeleteOldRecvSmSFiles running",
                     "DEBUG: DeleteOldSmSFiles(/tmp/sms/recv/): running",
                     "DEBUG: DeleteOldSmSFiles(): Checking age of SMS file file, 86401/86400 "
                     "seconds",
                     "Deleting SMS file '/tmp/sms/recv/file', older than 1440 minutes."}));
}

TEST_F(Ageing, NamesADirectoryThatCannotBeListedTwice) {
    g_i_DebugLevel = 1;
    RemoveDirectory("/tmp/sms/recv");
    DeleteOldRecvSmSFiles();
    EXPECT_EQ(world.log,
              (Lines{"DEBUG: DeleteOldRecvSmSFiles running",
                     "DEBUG: DeleteOldSmSFiles(/tmp/sms/recv/): running",
                     "DEBUG: Error opening SMS read directory /tmp/sms/recv/, errno 2",
                     "DEBUG: DeleteOldSmSFiles():  Cannot read dir /tmp/sms/recv/, errno 2"}));
}

TEST_F(Ageing, TreatsSendBeforeSendFail) {
    g_i_DebugLevel = 1;
    DeleteOldSendSmSFiles();
    EXPECT_EQ(world.log, (Lines{"DEBUG: DeleteOldSendSmSFiles running",
                                "DEBUG: DeleteOldSmSFiles(/tmp/sms/send/): running",
                                "DEBUG: DeleteOldSmSFiles(/tmp/sms/send_fail/): running"}));
    EXPECT_EQ(world.shell, (Lines{"mkdir -p /tmp/sms/send/", "mkdir -p /tmp/sms/send_fail/"}));
}

TEST_F(Ageing, WaitsWhileTheTimerCountsAtDebugLevelZero) {
    g_Cp_SmsCleanupTimer->Start();
    world.now_us += 899999000;
    DeleteOldSendSmSFiles();
    DeleteOldRecvSmSFiles();
    EXPECT_EQ(world.shell, Lines{});
    world.now_us += 1000;  // 900 s: expired
    DeleteOldRecvSmSFiles();
    EXPECT_EQ(world.shell, Lines{"mkdir -p /tmp/sms/recv/"});
    EXPECT_TRUE(g_Cp_SmsCleanupTimer->IsRunning()) << "only the main loop starts it again";
}

TEST_F(Ageing, RunsWhileTheTimerIsStopped) {
    DeleteOldSendSmSFiles();
    EXPECT_EQ(world.shell.size(), 2u);
    EXPECT_FALSE(g_Cp_SmsCleanupTimer->IsRunning());
}

// Guards oddity debug-ages-always.
TEST_F(Ageing, DoesNotAskTheTimerAtAnyOtherDebugLevel) {
    for (const int level : {-1, 1, 4}) {
        g_i_DebugLevel = level;
        g_Cp_SmsCleanupTimer->Start();
        world.shell.clear();
        DeleteOldSendSmSFiles();
        DeleteOldRecvSmSFiles();
        EXPECT_EQ(world.shell, (Lines{"mkdir -p /tmp/sms/send/", "mkdir -p /tmp/sms/send_fail/",
                                      "mkdir -p /tmp/sms/recv/"}));
    }
}

TEST_F(Ageing, IsSilentAtANegativeDebugLevel) {
    g_i_DebugLevel = -1;
    PutToSend("young", "");
    DeleteOldSendSmSFiles();
    EXPECT_EQ(world.log, Lines{});
}

#include "sms/send.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "sms/spool_fixture.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

using Lines = std::vector<std::string>;

namespace {

constexpr char kPrompt[] = "\r\n> ";
constexpr char kSent[] = "\r\n+CMGS: 12\r\n\r\nOK\r\n";
constexpr char kError[] = "\r\n+CMS ERROR: 330\r\n";
constexpr char kMakeDirectories[] = "mkdir -p /tmp/sms/send/ /tmp/sms/send_fail/";

}  // namespace

class Sending : public SpoolTest {
  protected:
    Sending() {
        g_i_CardType = kCardSierra881;
        g_b_SmsCmgfSupported = true;
        g_Cp_SmsCleanupTimer->Start();  // housekeeping has tests of its own
        world.answers[kCommand] = kPrompt;
        world.answers[kBody] = kSent;
    }

    void LetTheModemRefuse() { world.answers[kBody] = kError; }
    void WaitForTheNextTry() { world.now_us += 30000000; }
};

TEST_F(Sending, AFileIsSentAndDeleted) {
    PutToSend("msg", "TO=+12 3\nMSG=Hello\n");
    world.answers[kCommand] = kPrompt;
    world.answers["AT+CMGS=\"+123\""] = kPrompt;
    CheckSendSmS();
    EXPECT_EQ(world.log, (Lines{"Reading SMS File /tmp/sms/send/msg",
                                "Send Success: TO=+123, MSG=Hello\n\n"}));
    EXPECT_EQ(world.heard,
              (Lines{"AT+CMGS=\"+123\"", "\r\n", "Hello\n\n\x1a", "\r\n", kDeleteSent, "\r\n"}));
    EXPECT_FALSE(Exists("/tmp/sms/send/msg"));
    EXPECT_EQ(world.shell, Lines{kMakeDirectories});
}

TEST_F(Sending, EndsTheCountAndTheDelayOnSuccess) {
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    g_i_SmsSendAttempts = 2;
    g_Cp_DelaySendSMSTimer->Start();
    WaitForTheNextTry();
    CheckSendSmS();
    EXPECT_EQ(g_i_SmsSendAttempts, 0);
    EXPECT_FALSE(g_Cp_DelaySendSMSTimer->IsRunning());
}

TEST_F(Sending, TakesOneFileAPassTheFirstOfTheListing) {
    for (const char* name : {"a", "b", "c"}) PutToSend(name, "TO=123\nMSG=Hello\n");
    Lines expected = Names(kSmsSendDirectory);
    CheckSendSmS();
    expected.erase(expected.begin());
    EXPECT_EQ(Names(kSmsSendDirectory), expected);
}

TEST_F(Sending, DoesNothingButTheDirectoriesWithAnEmptySpool) {
    CheckSendSmS();
    EXPECT_EQ(world.shell, Lines{kMakeDirectories});
    EXPECT_EQ(world.log, Lines{});
    EXPECT_EQ(world.heard, Lines{});
}

TEST_F(Sending, DeletesAnInvalidFileAndForgetsTheFailures) {
    PutToSend("msg", "TO=123\nHello\n");
    g_i_SmsSendAttempts = 2;
    CheckSendSmS();
    EXPECT_EQ(world.log, (Lines{"Reading SMS File /tmp/sms/send/msg",
                                "SMS send file /tmp/sms/send/msg is invalid, does not contain a "
                                "'MSG=' field.",
                                "SMS send file /tmp/sms/send/msg is invalid, deleting"}));
    EXPECT_FALSE(Exists("/tmp/sms/send/msg"));
    EXPECT_EQ(g_i_SmsSendAttempts, 0);
    EXPECT_EQ(world.heard, Lines{});
}

TEST_F(Sending, DeletesALinkThatLeadsNowhere) {
    Link("/nowhere/at/all", "/tmp/sms/send/msg");
    CheckSendSmS();
    EXPECT_EQ(world.log,
              (Lines{"Reading SMS File /tmp/sms/send/msg", "Cannot open SMS file /tmp/sms/send/msg",
                     "SMS send file /tmp/sms/send/msg is invalid, deleting"}));
    EXPECT_FALSE(Exists("/tmp/sms/send/msg"));
}

TEST_F(Sending, ReportsADirectoryAsInvalidAndCannotDeleteIt) {
    std::filesystem::create_directory(Real("/tmp/sms/send/sub"));
    CheckSendSmS();
    EXPECT_EQ(world.log.back(), "SMS send file /tmp/sms/send/sub is invalid, deleting");
    EXPECT_TRUE(Exists("/tmp/sms/send/sub"));
    EXPECT_EQ(g_i_SmsSendAttempts, 0);
}

TEST_F(Sending, WithoutANumberGoesToTheEmptyNumber) {
    PutToSend("msg", "MSG=Hello\n");
    CheckSendSmS();
    EXPECT_EQ(world.Commands().front(), "AT+CMGS=\"\"");
    EXPECT_TRUE(world.Logged("Send Success: TO=, MSG=Hello\n\n"));
}

TEST_F(Sending, WaitsThirtySecondsAfterAFailure) {
    LetTheModemRefuse();
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    CheckSendSmS();
    EXPECT_EQ(world.log, (Lines{"Reading SMS File /tmp/sms/send/msg",
                                "CMS error #330: SMSC (message service center) address unknown",
                                "Send #1 Failed: TO=123, MSG=Hello\n\n (truncated)"}));
    EXPECT_TRUE(Exists("/tmp/sms/send/msg"));
    EXPECT_TRUE(g_Cp_DelaySendSMSTimer->IsCounting());

    world.log.clear();
    world.shell.clear();
    world.now_us += 29999000;
    CheckSendSmS();
    EXPECT_EQ(world.log, Lines{});
    EXPECT_EQ(world.shell, Lines{});
    world.now_us += 1000;
    CheckSendSmS();
    EXPECT_TRUE(world.Logged("Send #2 Failed: TO=123, MSG=Hello\n\n (truncated)"));
}

TEST_F(Sending, SaysThatItWaitsAtDebugLevelOne) {
    g_Cp_DelaySendSMSTimer->Start();
    CheckSendSmS();
    g_i_DebugLevel = -1;
    CheckSendSmS();
    EXPECT_EQ(world.log, Lines{});
    g_i_DebugLevel = 1;
    CheckSendSmS();
    EXPECT_EQ(world.log, Lines{"DEBUG: CheckSendSmS: DelaySendSMS timer running"});
}

TEST_F(Sending, MovesTheFileAwayAtTheThirdFailureInARow) {
    LetTheModemRefuse();
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    g_i_SmsSendAttempts = 2;
    g_Cp_DelaySendSMSTimer->Start();
    WaitForTheNextTry();
    world.on_sleep = [](std::int64_t) { fake::Current().now_us = 1773479702000000; };
    CheckSendSmS();
    EXPECT_EQ(world.log, (Lines{"Reading SMS File /tmp/sms/send/msg",
                                "CMS error #330: SMSC (message service center) address unknown",
                                "Send #3 Failed : TO=123, MSG=Hello\n\n (truncated)",
                                "Max send attempt, moving file to /tmp/sms/send_fail//"
                                "msg.20260314-091502"}));
    EXPECT_EQ(world.shell,
              (Lines{kMakeDirectories, kMakeDirectories,
                     "mv -f /tmp/sms/send/msg /tmp/sms/send_fail/msg.20260314-091502"}));
    EXPECT_FALSE(Exists("/tmp/sms/send/msg")) << "deleted even when the move did nothing";
    EXPECT_EQ(g_i_SmsSendAttempts, 0);
    EXPECT_FALSE(g_Cp_DelaySendSMSTimer->IsRunning());
}

// Guards oddity one-failure-count.
TEST_F(Sending, CountsForTheDaemonAndNotForTheFile) {
    LetTheModemRefuse();
    PutToSend("first", "TO=123\nMSG=Hello\n");
    CheckSendSmS();
    WaitForTheNextTry();
    CheckSendSmS();
    unlink("/tmp/sms/send/first");
    PutToSend("newcomer", "TO=123\nMSG=Hello\n");
    WaitForTheNextTry();
    CheckSendSmS();
    EXPECT_TRUE(world.LoggedContaining("Send #3 Failed :"));
    EXPECT_FALSE(Exists("/tmp/sms/send/newcomer"));
}

TEST_F(Sending, ShowsFiftyCharactersOfAFailedMessage) {
    const std::string text(60, 'x');
    PutToSend("msg", "TO=123\nMSG=" + text + "\n");
    world.answers[text + "\x1a"] = kError;
    CheckSendSmS();
    EXPECT_TRUE(world.Logged("Send #1 Failed: TO=123, MSG=" + text.substr(0, 50) + " (truncated)"));
    g_i_SmsSendAttempts = 2;
    WaitForTheNextTry();
    CheckSendSmS();
    EXPECT_TRUE(
        world.Logged("Send #3 Failed : TO=123, MSG=" + text.substr(0, 50) + " (truncated)"));
}

TEST_F(Sending, WithoutTextModeOnlyAgesTheSpool) {
    g_b_SmsCmgfSupported = false;
    g_Cp_SmsCleanupTimer->Stop();
    PutToSend("young", "TO=123\nMSG=Hello\n");
    PutToSend("old", "TO=123\nMSG=Hello\n");
    SetAge("/tmp/sms/send/old", 86401);
    CheckSendSmS();
    EXPECT_EQ(Names(kSmsSendDirectory), Lines{"young"});
    EXPECT_EQ(world.heard, Lines{});
    EXPECT_EQ(world.shell,
              (Lines{kMakeDirectories, "mkdir -p /tmp/sms/send/", "mkdir -p /tmp/sms/send_fail/"}));
}

TEST_F(Sending, AgesTheSpoolAfterSending) {
    g_Cp_SmsCleanupTimer->Stop();
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    SetAge("/tmp/sms/send/msg", 86401);
    CheckSendSmS();
    EXPECT_EQ(world.log.back(), "Send Success: TO=123, MSG=Hello\n\n") << "sent, not aged out";
    EXPECT_EQ(world.shell.size(), 3u);
}

TEST_F(Sending, SkipsTheAgeingWhileTheDelayRuns) {
    g_Cp_SmsCleanupTimer->Stop();
    g_Cp_DelaySendSMSTimer->Start();
    PutToSend("old", "");
    SetAge("/tmp/sms/send/old", 86401);
    CheckSendSmS();
    EXPECT_TRUE(Exists("/tmp/sms/send/old"));
}

TEST_F(Sending, DoesNotAgeASpoolThatCannotBeListed) {
    g_Cp_SmsCleanupTimer->Stop();
    RemoveDirectory("/tmp/sms/send");
    Put("/tmp/sms/send", "a file");
    CheckSendSmS();
    EXPECT_EQ(world.shell, Lines{kMakeDirectories});
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(Sending, QuotesOnlyNamesThatNeedIt) {
    struct Case {
        const char* name;
        const char* command;  // up to the time stamp
    };
    LetTheModemRefuse();
    for (const Case& c :
         {Case{"A-z_0.9", "mv -f /tmp/sms/send/A-z_0.9 /tmp/sms/send_fail/A-z_0.9.2026"},
          Case{"-rf", "mv -f /tmp/sms/send/-rf /tmp/sms/send_fail/-rf.2026"},
          Case{"a b", "mv -f '/tmp/sms/send/a b' '/tmp/sms/send_fail/a b.2026"},
          Case{"it's", "mv -f '/tmp/sms/send/it'\\''s' '/tmp/sms/send_fail/it'\\''s.2026"},
          Case{"$(reboot)`x`", "mv -f '/tmp/sms/send/$(reboot)`x`' '/tmp/sms/send_fail/$("},
          Case{"a\nb;c", "mv -f '/tmp/sms/send/a\nb;c' '/tmp/sms/send_fail/a\nb;c.2026"},
          Case{"\xff\xfe", "mv -f '/tmp/sms/send/\xff\xfe' '/tmp/sms/send_fail/\xff\xfe.2026"},
          Case{"~", "mv -f '/tmp/sms/send/~' '/tmp/sms/send_fail/~.2026"}}) {
        SCOPED_TRACE(c.name);
        PutToSend(c.name, "TO=123\nMSG=Hello\n");
        g_i_SmsSendAttempts = 2;
        CheckSendSmS();
        EXPECT_EQ(world.shell.back().substr(0, std::string(c.command).size()), c.command);
        EXPECT_FALSE(Exists(std::string("/tmp/sms/send/") + c.name));
    }
}

TEST_F(Sending, CutsAFailureNameThatTheFileSystemWouldRefuse) {
    LetTheModemRefuse();
    const std::string name(255, 'n');
    PutToSend(name, "TO=123\nMSG=Hello\n");
    g_i_SmsSendAttempts = 2;
    world.on_sleep = [](std::int64_t) { fake::Current().now_us = 1773479702000000; };
    CheckSendSmS();
    const std::string failed = std::string(239, 'n') + ".20260314-091502";
    EXPECT_EQ(failed.size(), 255u);
    EXPECT_EQ(world.shell.back(), "mv -f /tmp/sms/send/" + name + " /tmp/sms/send_fail/" + failed);
}

TEST_F(Sending, ALinkInThePlaceOfTheMovedFileIsRemoved) {
    LetTheModemRefuse();
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    g_i_SmsSendAttempts = 2;
    world.on_sleep = [](std::int64_t) { fake::Current().now_us = 1773479702000000; };
    Link("/etc", "/tmp/sms/send_fail/msg.20260314-091502");
    CheckSendSmS();
    EXPECT_FALSE(Exists("/tmp/sms/send_fail/msg.20260314-091502"));
}

TEST_F(Sending, AFileStaysWhenSendFailIsSomebodysLink) {
    LetTheModemRefuse();
    PutToSend("msg", "TO=123\nMSG=Hello\n");
    RemoveDirectory("/tmp/sms/send_fail");
    Link("/etc", "/tmp/sms/send_fail");
    GiveToSomebody("/tmp/sms/send_fail");
    g_i_SmsSendAttempts = 2;
    CheckSendSmS();
    EXPECT_TRUE(Exists("/tmp/sms/send/msg"));
    EXPECT_EQ(world.shell, Lines{});
    EXPECT_EQ(g_i_SmsSendAttempts, 0);
}

TEST_F(Sending, NoFileIsDeletedThroughALinkMadeDuringTheSending) {
    PutToSend("passwd", "TO=123\nMSG=Hello\n");
    bool swapped = false;
    world.on_sleep = [&](std::int64_t) {
        if (swapped) return;
        swapped = true;
        std::filesystem::rename(Real("/tmp/sms/send"), Real("/tmp/sms/etc"));
        Link("etc", "/tmp/sms/send");
        GiveToSomebody("/tmp/sms/send");
    };
    CheckSendSmS();
    EXPECT_TRUE(world.LoggedContaining("Send Success"));
    EXPECT_TRUE(Exists("/tmp/sms/etc/passwd"));
}

TEST_F(Sending, LogsTheWholeTextOfACutMessage) {
    const std::string text(150, 'x');
    PutToSend("msg", "TO=123\nMSG=" + text);  // the doubled last character is the 151st
    CheckSendSmS();
    EXPECT_EQ(world.log[1], "SMS Message too long (151 chars), truncating to 150 chars");
    EXPECT_EQ(world.log[2], "Send Success: TO=123, MSG=" + text + "x");
}

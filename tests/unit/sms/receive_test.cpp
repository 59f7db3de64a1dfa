#include "sms/receive.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <filesystem>

#include "sms/spool_fixture.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

using Lines = std::vector<std::string>;

namespace {

constexpr char kList[] = "AT+CMGL=\"REC UNREAD\"";
constexpr char kFirstHeader[] =
    "+CMGL: 1,\"REC UNREAD\",\"+15551234567\",,\"26/03/14,09:15:02-20\"\r\n";
constexpr char kSecondHeader[] =
    "+CMGL: 2,\"REC UNREAD\",\"+15557654321\",,\"26/03/14,09:16:00-20\"\r\n";
constexpr char kTrailer[] = "\r\nOK\r\n";

}  // namespace

class Receiving : public SpoolTest {
  protected:
    Receiving() {
        g_i_CardType = kCardSierra881;
        g_b_SmsCmgfSupported = true;
        g_Cp_SmsCleanupTimer->Start();  // housekeeping has tests of its own
    }

    // What the modem lists, and the files that come of it, oldest number first.
    Lines FilesFor(const std::string& listing) {
        world.answers[kList] = listing;
        CheckReceiveSmS();
        Lines names = Names(kSmsReceiveDirectory);
        std::sort(names.begin(), names.end());
        Lines files;
        for (const std::string& name : names) {
            files.push_back(Content(kSmsReceiveDirectory + name));
        }
        return files;
    }
};

TEST_F(Receiving, AMessageBecomesAFileOfThreeLines) {
    world.now_us = 1773479702000000;  // 09:15:02
    world.on_sleep = [](std::int64_t) { fake::Current().now_us = 1773479702000000; };
    EXPECT_EQ(FilesFor(std::string("\r\n") + kFirstHeader + "Hello\r\n" + kTrailer),
              Lines{"FROM=15551234567\nTIME=26/03/14-09:15:02-20\nMSG=Hello\n"});
    EXPECT_EQ(Names(kSmsReceiveDirectory), Lines{"sms_msg20260314-091502.1"});
    EXPECT_EQ(world.log, Lines{"Got SMS from 15551234567 at 26/03/14-09:15:02-20, Message: "
                               "Hello\n"});
    EXPECT_EQ(world.Commands(), (Lines{kList, "AT+CMGD=0,1"}));
}

TEST_F(Receiving, WaitsTwoSecondsForTheListAndOneForTheDeletion) {
    CheckReceiveSmS();
    // Each transaction adds 20 ms and 50 ms to its wait.
    EXPECT_EQ(world.slept_us, 2070000 + 1070000);
}

TEST_F(Receiving, TwoMessagesBecomeTwoFilesInListingOrder) {
    const std::string listing =
        std::string("\r\n") + kFirstHeader + "one\r\n" + kSecondHeader + "two\r\n" + kTrailer;
    EXPECT_EQ(FilesFor(listing), (Lines{"FROM=15551234567\nTIME=26/03/14-09:15:02-20\nMSG=one\n",
                                        "FROM=15557654321\nTIME=26/03/14-09:16:00-20\nMSG=two\n"}));
    Lines names = Names(kSmsReceiveDirectory);
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], names[1].substr(0, names[1].size() - 1) + "1");
    EXPECT_EQ(names[1].substr(names[1].size() - 2), ".2");
}

TEST_F(Receiving, AListingBecomesTheRightTexts) {
    struct Case {
        const char* what;
        std::string listing;
        Lines messages;  // each file behind "MSG="
    };
    const std::string first = kFirstHeader;
    const std::string second = kSecondHeader;
    const std::string end = kTrailer;
    const std::vector<Case> cases = {
        {"several lines", first + "Hello\r\nWorld\r\n" + end, {"Hello\nWorld\n"}},
        {"empty lines", first + "a\r\n\r\n\r\nb\r\n" + end, {"a\n\n\nb\n"}},
        {"an empty body line is kept, the modem's own is not",
         first + "a\r\n\r\n" + end,
         {"a\n\n"}},
        {"no body at all", first + end, {"\n"}},
        {"lines are trimmed", first + " \ta b\t \r\n" + end, {"a b\n"}},
        {"echo and noise before the first header",
         "AT+CMGL=\"REC UNREAD\"\r\r\n+CREG: 1\r\nOK\r\n" + first + "x\r\n" + end,
         {"x\n"}},
        {"OK as a body line", first + "OK\r\n" + second + "b\r\n" + end, {"OK\n", "b\n"}},
        {"a body line like a header of six fields",
         first + "a\r\n+CMGL: 1,2,3,4,5,6\r\nb\r\n" + end,
         {"a\n", "b\n"}},
        {"a body line like a header of two fields ends the message",
         first + "a\r\n+CMGL: 1,2\r\nlost\r\n" + second + "c\r\n" + end,
         {"a\n", "c\n"}},
        {"the label inside a line is text", first + "a +CMGL: 1\r\n" + end, {"a +CMGL: 1\n"}},
        {"the label without its blank is text", first + "+CMGL:1,2\r\n" + end, {"+CMGL:1,2\n"}},
        {"nothing unread", "\r\nOK\r\n", {}},
        {"an error", "\r\nERROR\r\n", {}},
        {"silence", "", {}},
        {"cut behind the body loses the last", first + "a\r\n" + second + "b\r\n", {"a\n"}},
        {"cut inside the trailer costs the last line", first + "a\r\n\r\nOK", {"\n"}},
        {"cut inside the trailer of a longer message", first + "a\r\nb\r\n\r\nOK", {"a\n"}},
        {"a stray line behind OK shifts the end", first + "a\r\n\r\nOK\r\nRING\r\n", {"a\n\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        for (const std::string& name : Names(kSmsReceiveDirectory)) {
            unlink((kSmsReceiveDirectory + name).c_str());
        }
        Lines messages;
        for (const std::string& file : FilesFor(c.listing)) {
            messages.push_back(file.substr(file.find("MSG=") + 4));
        }
        EXPECT_EQ(messages, c.messages);
        EXPECT_EQ(world.Commands().back(), "AT+CMGD=0,1") << "read messages go in every case";
    }
}

TEST_F(Receiving, AHeaderMustHaveSixFields) {
    struct Case {
        const char* header;
        int fields;
        bool taken;
    };
    g_i_DebugLevel = 1;
    for (const Case& c :
         {Case{"+CMGL: 1,\"REC UNREAD\",\"+1\",,\"26/03/14,09:15:02-20\"", 6, true},
          Case{"+CMGL: 1,\"REC UNREAD\",\"+1\",\"Doe\",\"26/03/14,09:15\"", 6, true},
          Case{"+CMGL: 1,\"REC UNREAD\",\"+1\",\"Doe, J\",\"26/03/14,09:15\"", 7, false},
          Case{"+CMGL: 1,\"REC UNREAD\",\"+1\",\"26/03/14,09:15\"", 5, false},
          Case{"+CMGL: 1", 1, false}, Case{"+CMGL: ,,,,,", 6, true}}) {
        SCOPED_TRACE(c.header);
        world.log.clear();
        world.answers[kList] = std::string("\r\n") + c.header + "\r\nbody\r\n\r\nOK\r\n";
        CheckReceiveSmS();
        EXPECT_TRUE(world.Logged("Found a valid message header, token count is " +
                                 std::to_string(c.fields)));
        EXPECT_EQ(world.LoggedContaining("Got SMS from"), c.taken);
    }
}

TEST_F(Receiving, QuotesAndPlusGoAndTheFieldsAreTakenByPosition) {
    EXPECT_EQ(
        FilesFor("+CMGL: 1,\"REC UNREAD\",\"++1 5\"5+5\",\"n\",\"d\"a,\"t\"\r\nx\r\n\r\nOK\r\n"),
        Lines{"FROM=1 555\nTIME=da-t\nMSG=x\n"});
}

TEST_F(Receiving, TellsEveryStepAtDebugLevelOne) {
    g_i_DebugLevel = 1;
    world.on_sleep = [](std::int64_t) { fake::Current().now_us = 1773479700000000; };
    FilesFor(std::string(kFirstHeader) + "a\r\n" + kSecondHeader + "b\r\n" + kTrailer);
    Lines told;
    for (const std::string& line : world.log) {
        const bool housekeeping = line.find("DeleteOld") != std::string::npos;
        const bool channel = line.find("ending command") != std::string::npos ||
                             line.find("read ") == 0 || line.find("Unsolicited") == 0;
        if (!housekeeping && !channel) told.push_back(line);
    }
    EXPECT_EQ(told,
              (Lines{"Found a valid message header, token count is 6",
                     "DEBUG: CheckReceiveSmS(): Enqueue message",
                     "Found a valid message header, token count is 6",
                     "DEBUG: CheckReceiveSmS(): Enqueue message",
                     "DEBUG: WriteOutQueuedSmsMessages(): Queue Size = 2",
                     "DEBUG: WriteOutQueuedSmsMessages: Writing out incoming SMS message to file "
                     "/tmp/sms/recv/sms_msg20260314-091500.1",
                     "Got SMS from 15551234567 at 26/03/14-09:15:02-20, Message: a\n",
                     "DEBUG: WriteOutQueuedSmsMessages: Writing out incoming SMS message to file "
                     "/tmp/sms/recv/sms_msg20260314-091500.2",
                     "Got SMS from 15557654321 at 26/03/14-09:16:00-20, Message: b\n"}));
}

TEST_F(Receiving, KeepsItsDebugTextsAtANegativeLevel) {
    g_i_DebugLevel = -1;
    FilesFor(std::string(kFirstHeader) + "a\r\n" + kTrailer);
    EXPECT_FALSE(world.LoggedContaining("DEBUG: WriteOut"));
    EXPECT_FALSE(world.LoggedContaining("Enqueue"));
    EXPECT_FALSE(world.LoggedContaining("token count"));
    EXPECT_TRUE(world.LoggedContaining("Got SMS from 15551234567"));
}

TEST_F(Receiving, TakesAThousandMessagesInOneListing) {
    std::string listing = "\r\n";
    for (int i = 1; i <= 1000; ++i) {
        listing += kFirstHeader + ("message " + std::to_string(i)) + "\r\n";
    }
    EXPECT_EQ(FilesFor(listing + kTrailer).size(), 1000u);
    EXPECT_EQ(world.CountLogged("Got SMS from 15551234567 at 26/03/14-09:15:02-20, Message: "
                                "message 1000\n"),
              1);
}

TEST_F(Receiving, ListsNothingWithoutTextModeButStillWritesAndDeletes) {
    g_b_SmsCmgfSupported = false;
    g_Cp_SmsQueue->push_back({0, "1", "t", "left over\n"});
    CheckReceiveSmS();
    EXPECT_EQ(world.Commands(), Lines{"AT+CMGD=0,1"});
    EXPECT_EQ(Names(kSmsReceiveDirectory).size(), 1u);
    EXPECT_TRUE(g_Cp_SmsQueue->empty());
}

TEST_F(Receiving, RunsHousekeepingFirst) {
    g_Cp_SmsCleanupTimer->Stop();
    Put("/tmp/sms/recv/old", "");
    SetAge("/tmp/sms/recv/old", 86401);
    FilesFor(std::string(kFirstHeader) + "a\r\n" + kTrailer);
    ASSERT_EQ(world.log.size(), 2u);
    EXPECT_EQ(world.log[0], "Deleting SMS file '/tmp/sms/recv/old', older than 1440 minutes.");
    EXPECT_EQ(world.shell, Lines{"mkdir -p /tmp/sms/recv/"});
}

TEST_F(Receiving, NumbersEveryWriteOutFromOne) {
    g_Cp_SmsQueue->push_back({0, "1", "t", "a\n"});
    WriteOutQueuedSmsMessages();
    world.now_us += 1000000;
    g_Cp_SmsQueue->push_back({0, "1", "t", "b\n"});
    WriteOutQueuedSmsMessages();
    Lines names = Names(kSmsReceiveDirectory);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Lines{"sms_msg20260314-091500.1", "sms_msg20260314-091501.1"}));
}

TEST_F(Receiving, AddsALineEndOnlyToATextWithoutOne) {
    g_Cp_SmsQueue->push_back({0, "1", "t", "no line end"});
    g_Cp_SmsQueue->push_back({0, "1", "t", ""});
    WriteOutQueuedSmsMessages();
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.1"),
              "FROM=1\nTIME=t\nMSG=no line end\n");
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.2"), "FROM=1\nTIME=t\nMSG=\n");
}

TEST_F(Receiving, AFailedWriteIsNotNoticed) {
    RemoveDirectory("/tmp/sms/recv");
    g_Cp_SmsQueue->push_back({0, "1", "t", "a\n"});
    WriteOutQueuedSmsMessages();
    EXPECT_TRUE(g_Cp_SmsQueue->empty());
    EXPECT_EQ(world.log, Lines{"Got SMS from 1 at t, Message: a\n"});
}

TEST_F(Receiving, NoPlantedLinkLeadsOutOfTheSpool) {
    Put("/tmp/sms/one", "keep me");
    Put("/tmp/sms/two", "keep me");
    Link("/nowhere/at/all", "/tmp/sms/recv/sms_msg20260314-091500.3");
    Link(Real("/tmp/sms/one"), "/tmp/sms/recv/sms_msg20260314-091500.1");
    std::filesystem::create_hard_link(Real("/tmp/sms/two"),
                                      Real("/tmp/sms/recv/sms_msg20260314-091500.2"));
    for (const char* text : {"a\n", "b\n", "c\n"}) {
        g_Cp_SmsQueue->push_back({0, "1", "t", text});
    }
    WriteOutQueuedSmsMessages();
    EXPECT_EQ(Content("/tmp/sms/one"), "keep me");
    EXPECT_EQ(Content("/tmp/sms/two"), "keep me");
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.1"), "FROM=1\nTIME=t\nMSG=a\n");
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.2"), "FROM=1\nTIME=t\nMSG=b\n");
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.3"), "FROM=1\nTIME=t\nMSG=c\n");
}

TEST_F(Receiving, AnOlderFileOfTheSameNameIsReplaced) {
    Put("/tmp/sms/recv/sms_msg20260314-091500.1", std::string(1000, 'x'));
    g_Cp_SmsQueue->push_back({0, "1", "t", "a\n"});
    WriteOutQueuedSmsMessages();
    EXPECT_EQ(Content("/tmp/sms/recv/sms_msg20260314-091500.1"), "FROM=1\nTIME=t\nMSG=a\n");
}

TEST_F(Receiving, AFifoInTheFilesPlaceDoesNotHoldTheDaemonUp) {
    ASSERT_EQ(mkfifo(Real("/tmp/sms/recv/sms_msg20260314-091500.1").c_str(), 0600), 0);
    g_Cp_SmsQueue->push_back({0, "1", "t", "a\n"});
    WriteOutQueuedSmsMessages();
    EXPECT_TRUE(g_Cp_SmsQueue->empty());
}

TEST_F(Receiving, NothingIsWrittenThroughSomebodysLink) {
    std::filesystem::create_directory(Real("/tmp/sms/elsewhere"));
    RemoveDirectory("/tmp/sms/recv");
    Link("elsewhere", "/tmp/sms/recv");
    GiveToSomebody("/tmp/sms/recv");
    g_Cp_SmsQueue->push_back({0, "1", "t", "a\n"});
    WriteOutQueuedSmsMessages();
    EXPECT_EQ(Names("/tmp/sms/elsewhere"), Lines{});
    EXPECT_TRUE(world.Logged("Got SMS from 1 at t, Message: a\n"));
}

using TextModeTest = SpoolTest;

TEST_F(TextModeTest, AsksOnlyTheSierra881) {
    for (const int card : {kCardGeneric, kCardType3, kCardSierraUsb305, kCardMc75i,
                           kCardNovatelE362, kCardNovatelE371}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        g_b_SmsCmgfSupported = true;
        world.log.clear();
        CheckCmgfSupport();
        EXPECT_FALSE(g_b_SmsCmgfSupported);
        EXPECT_EQ(world.log, Lines{"Modem does not support CMGF SMS"});
    }
    EXPECT_EQ(world.Commands(), Lines{});
    EXPECT_EQ(world.slept_us, 0);
}

TEST_F(TextModeTest, GoesByTheFirstFinalLine) {
    struct Case {
        const char* answer;
        bool supported;
    };
    g_i_CardType = kCardSierra881;
    for (const Case& c :
         {Case{"\r\nOK\r\n", true}, Case{"AT+CMGF=1\r\r\nOK\r\n", true}, Case{"OK", true},
          Case{" \tOK \r\nERROR\r\n", true}, Case{"\r\nERROR\r\nOK\r\n", false},
          Case{"\r\n+CREG: 1\r\n\r\nOK\r\n", true}, Case{"\r\nNOT OK\r\n", false},
          Case{"\r\n+CMS ERROR: 303\r\nOK\r\n", true}, Case{"\r\n+CMS ERROR: 303\r\n", false},
          Case{"\r\nok\r\n", false}, Case{"", false}}) {
        SCOPED_TRACE(c.answer);
        world.answers["AT+CMGF=1"] = c.answer;
        world.log.clear();
        world.slept_us = 0;
        CheckCmgfSupport();
        EXPECT_EQ(g_b_SmsCmgfSupported, c.supported);
        EXPECT_EQ(world.log, Lines{c.supported ? "Modem supports CMGF SMS"
                                               : "Modem does not support CMGF SMS"});
        EXPECT_GE(world.slept_us, 2000000);
    }
}

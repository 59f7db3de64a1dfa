#include "capture/log_lines.h"

#include "field_log.h"

namespace capture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(const std::string& log) {
    std::vector<std::string> texts;
    for (const LogLine& line : ReadLogLines(log, kNow)) {
        texts.push_back(line.kind == LogLine::kLost ? "(lost)" : line.text);
    }
    return texts;
}

TEST(LogLines, ReadsEveryForm) {
    for (const char* const head :
         {"Mar 14 09:15:00 router modemd[42]: ", "Mar 14 09:15:00 router user.notice modemd: ",
          "2026-03-14T09:15:00+00:00 router modemd[42]: ",
          "Sat Mar 14 09:15:00 2026 user.notice modemd: "}) {
        SCOPED_TRACE(head);
        const std::vector<LogLine> lines = ReadLogLines(std::string(head) + "text: one\n", kNow);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].text, "text: one");
        EXPECT_EQ(lines[0].when, 1773479700000000);
        EXPECT_FALSE(lines[0].exact);
        EXPECT_EQ(lines[0].place.column, std::string(head).size() + 1);
    }
}

TEST(LogLines, FractionsOfASecondAreExact) {
    const auto lines = ReadLogLines("2026-03-14T09:15:00.25+00:00 router modemd[42]: text\n", kNow);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].exact);
    EXPECT_EQ(lines[0].when, 1773479700250000);
}

TEST(LogLines, OtherProgramsSayNothing) {
    EXPECT_THAT(Texts("Mar 14 09:15:00 router dnsmasq[7]: modemd: no\n"
                      "garbage\n\n"
                      "Mar 14 09:15:00 router kernel: modemd[42]: no\n"),
                IsEmpty());
}

TEST(LogLines, FoldedLinesAreUnfolded) {
    EXPECT_THAT(
        Texts(std::string(kHead) + "a\nMar 14 09:15:01 router last message repeated 2 times\n"),
        ElementsAre("a", "a", "a"));
    EXPECT_THAT(Texts(std::string(kHead) + "a\n" + kHead + "message repeated 2 times: [ a]\n"),
                ElementsAre("a", "a", "a"));
    // Of another program's line.
    EXPECT_THAT(
        Texts(std::string(kHead) + "a\nMar 14 09:15:01 router cron[3]: x\n"
                                   "Mar 14 09:15:01 router last message repeated 2 times\n"),
        ElementsAre("a"));
}

TEST(LogLines, MessagesThatWereThrownAwayLeaveAHole) {
    const std::string line = std::string(kHead) + "a\n";
    const char* const kOurs[] = {
        "rsyslogd: imuxsock lost 12 messages from pid 42 due to rate-limiting\n",
        "rsyslogd: imuxsock begins to drop messages; begin to drop messages from pid 42\n",
        "systemd-journald[1]: Suppressed 12 messages from modemd.service\n",
    };
    for (const char* const notice : kOurs) {
        EXPECT_THAT(Texts(line + "Mar 14 09:15:01 router " + notice), ElementsAre("a", "(lost)"));
    }
    EXPECT_THAT(Texts(line + "Mar 14 09:15:01 router rsyslogd: imuxsock lost 12 messages from pid "
                             "77 due to rate-limiting\n"),
                ElementsAre("a"));
}

TEST(LogLines, AWrappedDumpIsJoined) {
    const std::string dump = Dump(std::string(500, 'x'));
    const std::string first = dump.substr(0, 1024 - sizeof(kHead) + 1);
    const std::string rest = dump.substr(first.size());
    EXPECT_THAT(Texts(kHead + first + "\n" + kHead + rest + "\n"), ElementsAre(dump));
    EXPECT_THAT(Texts(kHead + first + "\n" + rest + "\n"), ElementsAre(dump));
    // No dump goes on behind a short line.
    EXPECT_EQ(Texts(std::string(kHead) + "Raw Response: 0d \n" + kHead + "0a \n").size(), 2U);
}

TEST(LogLines, ATextWithLineEndsStaysOneText) {
    EXPECT_THAT(Texts(std::string(kHead) + "Sending command: Hello\n\n\x1a\n" + kHead + "b\n"),
                ElementsAre("Sending command: Hello\n\n\x1a", "b"));
}

TEST(LogLines, AFileOfAnotherSystemHasItsLineEnds) {
    EXPECT_THAT(Texts(std::string(kHead) + "a\r\n" + kHead + "b\r\n"), ElementsAre("a", "b"));
}

TEST(LogLines, EscapesBecomeBytes) {
    EXPECT_EQ(WithoutLogEscapes("Hello#012#032"), "Hello\n\x1a");
    EXPECT_EQ(WithoutLogEscapes("Hello^Z"), "Hello\x1a");
    EXPECT_EQ(WithoutLogEscapes("at^Zoom #9 #01 AT^SYSINFO"), "at^Zoom #9 #01 AT^SYSINFO");
    EXPECT_EQ(WithoutLogEscapes("#377"), "\xff");
    EXPECT_EQ(WithoutLogEscapes("#400#"), "#400#");
}

}  // namespace
}  // namespace capture

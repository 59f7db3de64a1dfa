#include "capture/dialogue.h"

#include "field_log.h"
#include "support/text.h"

namespace capture {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// A line so many milliseconds after the start.
std::string At(int milliseconds, const std::string& text) {
    return Format("2026-03-14T09:15:%02d.%03d000+00:00 router modemd[42]: ", milliseconds / 1000,
                  milliseconds % 1000) +
           text + "\n";
}

Dialogue Read(const std::string& log) {
    return ReadDialogue(ReadLogLines(log, kNow));
}

const std::string kEnd = At(59000, "Sending command: AT");

TEST(Dialogue, AnAnswerComesBeforeTheDaemonLooks) {
    const Dialogue dialogue =
        Read(At(1000, "Sending command: AT+CREG?") + At(1070, Dump("\r\n+CREG: 0,1")) +
             At(1070, "read 12 bytes from port") + At(1120, Dump("\r\nOK\r\n")) +
             At(1120, "read 6 bytes from port") + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(1));
    const Exchange& exchange = dialogue.exchanges[0];
    EXPECT_EQ(exchange.command, "AT+CREG?");
    EXPECT_EQ(exchange.Text(), "\r\n+CREG: 0,1\r\nOK\r\n");
    ASSERT_THAT(exchange.answer, SizeIs(2));
    EXPECT_EQ(exchange.answer[0].delay, 25 * kMillisecond);
    EXPECT_EQ(exchange.answer[1].delay, 75 * kMillisecond);
}

// The signal query is read once, after a second and a fifth; and what comes unasked, before the
// next command.
TEST(Dialogue, WhatNobodyCountsBelongsToTheCommandBefore) {
    const Dialogue dialogue =
        Read(At(1000, "Sending command: AT+CSQ") + At(2220, Dump("+CSQ: 1,2\r\n")) +
             At(2220, "IdentifyMessage: +CSQ: 1,2") + At(4220, Dump("RING\r\n")) + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(1));
    ASSERT_THAT(dialogue.exchanges[0].answer, SizeIs(2));
    EXPECT_EQ(dialogue.exchanges[0].answer[0].delay, 1175 * kMillisecond);
    EXPECT_EQ(dialogue.exchanges[0].answer[1].delay, 3175 * kMillisecond);
}

// Whole seconds: the second look comes behind the first, and what is unasked behind both.
TEST(Dialogue, TheDaemonsPaceStandsInForFractions) {
    const Dialogue dialogue = Read(Asked("AT", "OK\r\n") + kHead + Dump("!") + "\n" + kHead +
                                   "read 1 bytes from port\n" + kHead + Dump("?") + "\n" + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(1));
    ASSERT_THAT(dialogue.exchanges[0].answer, SizeIs(3));
    EXPECT_EQ(dialogue.exchanges[0].answer[0].delay, 25 * kMillisecond);
    EXPECT_EQ(dialogue.exchanges[0].answer[1].delay, 75 * kMillisecond);
    EXPECT_EQ(dialogue.exchanges[0].answer[2].delay, 175 * kMillisecond);
}

TEST(Dialogue, SilenceIsAnAnswer) {
    const Dialogue dialogue = Read(Asked("AT+TEMP", "") + Asked("AT", "OK") + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(2));
    EXPECT_THAT(dialogue.exchanges[0].answer, IsEmpty());
}

TEST(Dialogue, AStartOfTheDaemonIsSeen) {
    const Dialogue dialogue =
        Read(std::string(kHead) + "v1.45 starting\n" + Asked("AT", "OK") + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(2));
    EXPECT_TRUE(dialogue.exchanges[0].IsStart());
}

TEST(Dialogue, BytesBeforeTheFirstCommandAreNobodys) {
    const Dialogue dialogue =
        Read(std::string(kHead) + Dump("OK") + "\n" + Asked("AT", "OK") + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(1));
    EXPECT_EQ(dialogue.exchanges[0].Text(), "OK");
}

TEST(Dialogue, AHoleTakesItsExchangeAlong) {
    const Dialogue dialogue =
        Read(Asked("AT+A", "OK") + kHead + "Sending command: AT+B\n" +
             "Mar 14 09:15:00 router rsyslogd: imuxsock lost 12 messages from pid 42\n" + kHead +
             "read 9 bytes from port\n" + Asked("AT+C", "OK") + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(2));
    EXPECT_EQ(dialogue.exchanges[0].command, "AT+A");
    EXPECT_EQ(dialogue.exchanges[1].command, "AT+C");
    EXPECT_TRUE(dialogue.exchanges[1].after_loss);
    EXPECT_THAT(dialogue.notes[0], HasSubstr("thrown away"));
}

// Of a dump that the logger has cut the line in front of it may hold the rest.
TEST(Dialogue, ACutDumpIsCompletedFromTheText) {
    const std::string answer = "\r\n" + std::string(600, 'x') + "\r\nOK\r\n";
    const std::string cut = Dump(answer).substr(0, 988);
    std::string text = "Clear Response: #015#012" + std::string(600, 'x') + "#015#012OK#015#012";
    const auto log = [&] {
        return std::string(kHead) + "Sending command: AT+COPN\n" + kHead + text + "\n" + kHead +
               cut + "\n" + kHead + Format("read %zu bytes from port\n", answer.size());
    };
    const Dialogue dialogue = Read(log() + kEnd);
    ASSERT_THAT(dialogue.exchanges, SizeIs(1));
    EXPECT_EQ(dialogue.exchanges[0].Text(), answer);
    EXPECT_EQ(dialogue.sources[0].bytes.size(), answer.size());

    text.resize(300);
    const Dialogue without = Read(log() + kEnd);
    EXPECT_THAT(without.exchanges, IsEmpty());
    EXPECT_THAT(without.notes[0], HasSubstr("of the 608 bytes"));
}

TEST(Dialogue, ALogThatEndsInAnAnswerLosesIt) {
    const std::string log = Asked("AT+A", "OK") + Asked("AT+B", "OK");
    for (std::size_t size = 0; size <= log.size(); ++size) {
        const Dialogue dialogue = Read(log.substr(0, size));
        for (const Exchange& exchange : dialogue.exchanges) {
            EXPECT_EQ(exchange.command, "AT+A");
            EXPECT_EQ(exchange.Text(), "OK");
        }
    }
    EXPECT_THAT(Read(log).exchanges, SizeIs(1));
}

}  // namespace
}  // namespace capture

// The AT dialogue: what is written, how long is waited, what is read, and what is said about it.
#include "modem/at_channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

using Lines = std::vector<std::string>;

// The command writer sends its whole 80-byte buffer.
std::string Padded(std::string command) {
    command.resize(80, '\0');
    return command;
}

class AtChannel : public fake::DaemonTest {
  protected:
    std::string Read(int size = kReadSize) {
        std::string buffer(static_cast<size_t>(size) + 1, 'x');
        const int count = ReadPort(buffer.data(), size);
        return buffer.substr(0, static_cast<size_t>(std::max(count, 0)));
    }
    // A port whose reads work and whose writes fail, with these bytes waiting.
    static void MakePortReadOnly(const std::string& waiting) {
        int ends[2] = {-1, -1};
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(write(ends[1], waiting.data(), waiting.size()),
                  static_cast<ssize_t>(waiting.size()));
        close(ends[1]);
        close(g_i_PortFd);
        g_i_PortFd = ends[0];
    }
    // A port that says that bytes wait, takes writes, and fails every read.
    void MakeReadsFail() {
        int ends[2] = {-1, -1};
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(write(ends[1], "wait", 4), 4);
        close(g_i_PortFd);
        g_i_PortFd = ends[1];
        pipe_read_end_ = ends[0];
    }
    ~AtChannel() override { close(pipe_read_end_); }

  private:
    int pipe_read_end_ = -1;
};

TEST_F(AtChannel, ReadGivesNothingWhenNothingWaits) {
    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(ReadPort(buffer, 3), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(buffer[3], 'x');
    EXPECT_TRUE(world.log.empty());
}

TEST_F(AtChannel, ReadHonoursItsSizeAndEndsTheTextWithAZeroByte) {
    world.Waiting("abcdef");
    char buffer[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(ReadPort(buffer, 4), 4);
    EXPECT_EQ(std::string(buffer, 6), std::string("abcd\0x", 6));
    EXPECT_EQ(ReadPort(buffer, 4), 2);
    EXPECT_STREQ(buffer, "ef");
}

TEST_F(AtChannel, ADriverThatDoesNotSayWhatWaitsCountsAsSilent) {
    for (const int level : {-1, 0, 1, 2}) {
        SCOPED_TRACE(level);
        BreakPort();
        g_i_DebugLevel = level;
        world.log.clear();
        EXPECT_EQ(Read(), "");
        EXPECT_EQ(world.log, level > 1 ? Lines{"No Response from device"} : Lines{});
    }
}

TEST_F(AtChannel, AFailedReadComesBackNegative) {
    MakeReadsFail();
    g_i_DebugLevel = 4;
    char buffer[8];
    EXPECT_LT(ReadPort(buffer, sizeof(buffer)), 0);
    EXPECT_EQ(world.log, Lines{"read No Data"});
}

TEST_F(AtChannel, TheRawDumpNeedsLevelFour) {
    for (const int level : {-1, 0, 1, 2, 3}) {
        g_i_DebugLevel = level;
        world.Waiting("OK\r\n");
        Read();
        EXPECT_TRUE(world.log.empty()) << level;
    }
    g_i_DebugLevel = 4;
    world.Waiting(std::string("O\xff\0K", 4));
    Read();
    EXPECT_EQ(world.log, (Lines{"Clear Response: O\xff", "Raw Response: 4f ff 00 4b "}));
}

TEST_F(AtChannel, EveryCommandTypeHasItsCommand) {
    struct Row {
        int type;
        bool second_form;
        const char* expected;
    };
    const Row rows[] = {
        {1, false, "AT"},
        {2, false, "AT+CSQ"},
        {2, true, "AT+CSQ?"},
        {3, false, "AT+CIND?"},
        {3, true, "AT+CIND?"},
        {4, false, "AT$NWQMICONNECT=,,"},
        {5, false, "AT$NWQMIDISCONNECT"},
        {7, false, "AT"},
        {0, false, "AT"},
        {-1, true, "AT"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        g_b_CsqQueryForm = row.second_form;
        world.heard.clear();
        SendCommandType(row.type);
        EXPECT_EQ(world.Commands(), Lines{row.expected});
    }
}

// Deliberate: all 80 bytes of the command buffer go out, and CR and LF follow on their own.
// Guards oddity commands-end-in-zeros.
TEST_F(AtChannel, ACannedCommandIsWrittenWithItsZeros) {
    SendCommandType(kSendSignalQuery);
    EXPECT_EQ(world.heard, (Lines{Padded("AT+CSQ"), "\r", "\n"}));
}

TEST_F(AtChannel, ACannedCommandTakesItsSecondAndReadsNothing) {
    g_i_PortErrorCounter = 7;
    world.answers["AT"] = "OK\r\n";
    SendCommandType(kSendAt);
    EXPECT_EQ(world.slept_us, 20000 + 20000 + 1000000);
    EXPECT_EQ(g_i_PortErrorCounter, 0);
    EXPECT_EQ(Read(), "OK\r\n");
}

// A message body that loses its Ctrl-Z leaves the modem at its prompt.
TEST_F(AtChannel, WhatTheDriverTakesInPiecesIsFinished) {
    const int room = 4096;
    ASSERT_EQ(setsockopt(g_i_PortFd, SOL_SOCKET, SO_SNDBUF, &room, sizeof(room)), 0);
    const std::string body(60000, 'b');
    SendAtCommand(body + '\x1a', 0);
    ASSERT_GT(world.heard.size(), 2u) << "the driver took it in one piece";
    std::string heard;
    for (const std::string& piece : world.heard) heard += piece;
    EXPECT_EQ(heard, body + "\x1a\r\n");
    EXPECT_EQ(g_i_PortErrorCounter, 0);
}

TEST_F(AtChannel, AWriteThatIsNeverFinishedCountsAsFailedWithinTwoSeconds) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    close(g_i_PortFd);
    g_i_PortFd = ends[0];
    g_i_DebugLevel = 1;
    g_i_PortErrorCounter = 3;
    SendAtCommand(std::string(10000000, 'b'), 7);
    EXPECT_TRUE(world.Logged("Unable to write to file handle"));
    EXPECT_EQ(g_i_PortErrorCounter, 4);
    EXPECT_GE(world.slept_us, 1000000);
    EXPECT_LT(world.slept_us, 2000000) << "no waiting for an answer";
    close(ends[1]);
}

// It is asked again with the next command; only what was begun is finished.
TEST_F(AtChannel, APortThatTakesNothingFailsAtOnce) {
    std::string full(1 << 20, 'f');
    while (write(g_i_PortFd, full.data(), full.size()) > 0) {
    }
    ASSERT_EQ(errno, EAGAIN);
    SendAtCommand("AT", 0);
    EXPECT_EQ(g_i_PortErrorCounter, 1);
    EXPECT_EQ(world.slept_us, 0);
}

TEST_F(AtChannel, ACannedCommandIsLoggedAtANonZeroLevel) {
    for (const int level : {-1, 0, 1}) {
        SCOPED_TRACE(level);
        g_i_DebugLevel = level;
        world.log.clear();
        SendCommandType(kSendIndicatorQuery);
        EXPECT_EQ(world.log, level != 0 ? Lines{"Sending command: AT+CIND?"} : Lines{});
    }
}

TEST_F(AtChannel, AFailedCannedCommandIsCountedAndDoesNotWait) {
    BreakPort();
    g_i_PortErrorCounter = 3;
    SendCommandType(kSendSignalQuery);
    EXPECT_EQ(g_i_PortErrorCounter, 4);
    EXPECT_EQ(world.slept_us, 0);
    EXPECT_TRUE(world.log.empty());
    g_i_DebugLevel = -1;
    SendCommandType(kSendSignalQuery);
    EXPECT_EQ(world.log, (Lines{"Sending command: AT+CSQ", "Unable to write command type 2"}));
    EXPECT_EQ(g_i_PortErrorCounter, 5);
}

TEST_F(AtChannel, UnsolicitedTextIsReturnedWholeAndLoggedByLine) {
    world.Waiting("\r\n+CREG: 1\r\nabc\nabcd\nRING");
    g_i_DebugLevel = -1;
    EXPECT_EQ(ReadUnsolicited(), "\r\n+CREG: 1\r\nabc\nabcd\nRING");
    EXPECT_EQ(world.log, (Lines{"Unsolicited message: +CREG: 1\r", "Unsolicited message: abcd",
                                "Unsolicited message: RING"}));
}

TEST_F(AtChannel, UnsolicitedTextEndsAtAZeroByteAndIsQuietWithoutDebug) {
    world.Waiting(std::string("+CREG: 1\0+CREG: 2", 17));
    EXPECT_EQ(ReadUnsolicited(), "+CREG: 1");
    EXPECT_TRUE(world.log.empty());
    EXPECT_EQ(ReadUnsolicited(), "");
}

TEST_F(AtChannel, UnsolicitedTextOfAFailingPortIsEmpty) {
    MakeReadsFail();
    EXPECT_EQ(ReadUnsolicited(), "");
}

TEST_F(AtChannel, ATransactionReturnsTheDrainedTextAndTheWholeAnswer) {
    world.Waiting("\r\n+CREG: 5\r\n");
    world.answers["ATI"] = "ATI\r\r\nModem\r\n\r\nOK\r\n";
    EXPECT_EQ(SendAtCommand("ATI", 0), "\r\n+CREG: 5\r\nATI\r\r\nModem\r\n\r\nOK\r\n");
}

TEST_F(AtChannel, ATransactionWritesTheBareCommandThenCrLf) {
    SendAtCommand("AT+CREG=2", 1);
    EXPECT_EQ(world.heard, (Lines{"AT+CREG=2", "\r\n"}));
}

TEST_F(AtChannel, ATransactionWithoutAnswerTakesItsWaitAndSeventyMilliseconds) {
    g_i_PortErrorCounter = 9;
    EXPECT_EQ(SendAtCommand("AT", 0), "");
    EXPECT_EQ(world.slept_us, 70000);
    EXPECT_EQ(g_i_PortErrorCounter, 0);
    for (const unsigned wait : {1u, 2u, 5u}) {
        world.slept_us = 0;
        SendAtCommand("AT", wait);
        EXPECT_EQ(world.slept_us, wait * 1000000 + 70000);
    }
}

TEST_F(AtChannel, EveryReadThatFindsSomethingAddsFiftyMilliseconds) {
    world.answers["AT"] = "OK\r\n";
    SendAtCommand("AT", 0);
    EXPECT_EQ(world.slept_us, 120000);
}

TEST_F(AtChannel, ATransactionReadsOnUntilNothingWaits) {
    world.answers["AT"] = "one ";
    const std::int64_t start = world.now_us;
    world.on_sleep = [&](std::int64_t now) {
        if (now - start == 120000) world.Waiting("two ");
        if (now - start == 170000) world.Waiting("three");
    };
    EXPECT_EQ(SendAtCommand("AT", 0), "one two three");
}

TEST_F(AtChannel, ALateAnswerBecomesTheStartOfTheNextTransaction) {
    EXPECT_EQ(SendAtCommand("AT+COPS?", 1), "");
    world.Waiting("late\r\n");
    world.answers["ATI"] = "Modem\r\n";
    EXPECT_EQ(SendAtCommand("ATI", 0), "late\r\nModem\r\n");
}

TEST_F(AtChannel, TheTextOfAReadEndsAtItsFirstZeroByte) {
    world.answers["AT"] = std::string("O\0K\r\n", 5);
    EXPECT_EQ(SendAtCommand("AT", 0), "O");
}

TEST_F(AtChannel, ATransactionSpeaksByLevel) {
    const std::string sending = "Sending command: AT";
    const std::string count = "read 4 bytes from port";
    const std::string returning = "DEBUG: returning string class : OK\r\n";
    const std::string clear = "Clear Response: OK\r\n";
    const std::string raw = "Raw Response: 4f 4b 0d 0a ";
    struct Row {
        int level;
        Lines expected;
    };
    const Row rows[] = {
        {-1, {sending, count}},
        {0, {}},
        {1, {sending, count}},
        {2, {sending, count, returning}},
        {3, {sending, count, returning}},
        {4, {sending, clear, raw, count, returning}},
    };
    world.answers["AT"] = "OK\r\n";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.level);
        g_i_DebugLevel = row.level;
        world.log.clear();
        SendAtCommand("AT", 0);
        EXPECT_EQ(world.log, row.expected);
    }
}

TEST_F(AtChannel, ATransactionOnAClosedPortReturnsTheDrainedText) {
    MakePortReadOnly("+CREG: 1\r\n");
    g_i_DebugLevel = 1;
    g_i_PortErrorCounter = 24;
    EXPECT_EQ(SendAtCommand("ATI", 2), "+CREG: 1\r\n");
    EXPECT_EQ(g_i_PortErrorCounter, 25);
    EXPECT_EQ(world.slept_us, 0);
    EXPECT_EQ(world.log, (Lines{"Unsolicited message: +CREG: 1\r", "Sending command: ATI",
                                "Unable to write to file handle"}));
}

TEST_F(AtChannel, AFailedWriteIsSilentWithoutDebug) {
    BreakPort();
    EXPECT_EQ(SendAtCommand("ATI", 2), "");
    EXPECT_EQ(g_i_PortErrorCounter, 1);
    EXPECT_TRUE(world.log.empty());
}

TEST_F(AtChannel, AFailedReadEndsTheTransaction) {
    MakeReadsFail();
    EXPECT_EQ(SendAtCommand("AT", 0), "");
    EXPECT_EQ(world.slept_us, 70000);
}

TEST_F(AtChannel, OnlyConsecutiveFailuresCount) {
    const int port = g_i_PortFd;
    for (int i = 0; i < 25; ++i) {
        g_i_PortFd = -1;
        SendAtCommand("AT", 0);
    }
    EXPECT_EQ(g_i_PortErrorCounter, 25);
    g_i_PortFd = port;
    SendAtCommand("AT", 0);
    EXPECT_EQ(g_i_PortErrorCounter, 0);
}

// Neither a flood nor a chatterbox nor a line full of zeros may hold the one thread for ever.
TEST_F(AtChannel, AModemThatNeverStopsIsLeftInTheEnd) {
    struct Row {
        size_t bytes;  // that come with every pause
        char byte;
        std::int64_t longest_us;
    };
    const Row rows[] = {
        {60000, 'x', 2000000}, {60000, '\0', 2000000}, {1, 'x', 31000000}, {1, '\0', 31000000}};
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.bytes) + " of " + std::to_string(row.byte));
        world.on_sleep = [&](std::int64_t) { world.Waiting(std::string(row.bytes, row.byte)); };
        world.slept_us = 0;
        const std::string answer = SendAtCommand("AT", 0);
        EXPECT_LE(answer.size(), 5u * kReadSize);
        EXPECT_EQ(answer.empty(), row.byte == '\0');
        EXPECT_LE(world.slept_us, row.longest_us);
        while (!Read().empty()) {
        }
    }
}

TEST_F(AtChannel, MassageKeepsPrintableTextAndLineEnds) {
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        char byte = static_cast<char>(value);
        MassageBlock(&byte, 1);
        const bool kept = value >= 10 && value <= 126;
        EXPECT_EQ(byte, kept ? static_cast<char>(value) : ' ');
    }
}

TEST_F(AtChannel, MassageChangesOnlyTheGivenLength) {
    char block[] = "\t\x7f\t";
    MassageBlock(block, 2);
    EXPECT_STREQ(block, "  \t");
    MassageBlock(block, 0);
    EXPECT_STREQ(block, "  \t");
}

TEST_F(AtChannel, TheMassagedDumpNeedsLevelTwo) {
    for (const int level : {-1, 0, 1, 2, 4}) {
        SCOPED_TRACE(level);
        char block[] = {'O', '\0', '\r', '\n'};
        g_i_DebugLevel = level;
        world.log.clear();
        MassageBlock(block, 4);
        EXPECT_EQ(world.log, level > 1 ? Lines{"Massaged packet : 4f 20 0d 0a "} : Lines{});
    }
}

}  // namespace

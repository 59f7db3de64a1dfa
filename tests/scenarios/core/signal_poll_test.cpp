// The signal query of every pass: its two forms, the indicator form, and modems that answer
// nothing, too much or rubbish.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;  // texts with NUL bytes
using rig::Files;
using rig::World;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;
using Lines = std::vector<std::string>;

constexpr char kLightbar[] = "/var/log/lightbar";
constexpr char kCsqAnswer[] = "\r\n+CSQ: 17,99\r\n\r\nOK\r\n";

// A modem that does not answer the signal query; an echo would be an answer.
void MakeSilent(World& world) {
    world.modem.Sim().SetEcho(false);
    world.modem.Answer("AT+CSQ", "");
}

TEST(SignalPoll, AsksOnceInEveryPassAndPublishesTheLine) {
    World world;
    world.modem.Control("signal 23 99");
    world.Start();
    world.RunFor(120s);
    EXPECT_EQ(Files::Read(kLightbar), "+CSQ: 23,99\n");
    // A pass of 3.24 s, or of 3.36 s with its status work.
    EXPECT_NEAR(static_cast<double>(world.trace.CommandsMatching("AT+CSQ").size()), 36.0, 2.0);
}

TEST(SignalPoll, AlternatesBetweenItsFormsForAsLongAsErrorsCome) {
    World world("-d");
    world.modem.Answer("AT+CSQ", "\r\nERROR\r\n");
    world.modem.Answer("AT+CSQ?", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(21s);
    EXPECT_THAT(world.trace.CommandsMatching("AT+CSQ"),
                ElementsAre("AT+CSQ", "AT+CSQ?", "AT+CSQ", "AT+CSQ?", "AT+CSQ", "AT+CSQ?"));
    world.trace.ExpectLogInOrder({
        "AT command gave an error, switching CSQ modes to AT+CSQ?",
        "unknown AT response from modem",
        "AT command gave an error, switching CSQ modes to AT+CSQ",
        "unknown AT response from modem",
    });
    EXPECT_FALSE(Files::Exists(kLightbar));
}

TEST(SignalPoll, StaysWithTheFormThatWorks) {
    World world;
    world.modem.Answer("AT+CSQ", "\r\nERROR\r\n");
    world.modem.Answer("AT+CSQ?", "\r\n+CSQ: 9,0\r\n\r\nOK\r\n");
    world.Start();
    world.RunFor(60s);
    const Lines polls = world.trace.CommandsMatching("AT+CSQ");
    EXPECT_EQ(polls.at(0), "AT+CSQ");
    EXPECT_THAT(Lines(polls.begin() + 1, polls.end()), Each("AT+CSQ?"));
    EXPECT_EQ(Files::Read(kLightbar), "+CSQ: 9,0\n");
}

TEST(SignalPoll, AnErrorOfAnotherCommandDoesNotFlipTheForm) {
    World world;
    world.modem.Answer("AT+CGDCONT?", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(world.trace.Commands(), Not(Contains("AT+CSQ?")));
}

TEST(SignalPoll, ASilentModemKeepsTheStatusWorkBack) {
    World world("-881 -d");
    MakeSilent(world);
    world.router.SetUptime(1h);
    world.files.Write("/var/log/kvtinit.status", "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.trace.Watch("/var/log/wireless.cardstats");
    world.Start();
    world.RunFor(120s);
    EXPECT_GT(world.trace.CountLog("read 0 bytes from port"), 10u);
    // Not one of the steps behind an answer: status file, network time, error checks.
    EXPECT_EQ(world.trace.Versions("/var/log/wireless.cardstats").size(), 1u);  // of the start-up
    EXPECT_THAT(world.trace.Commands(), Not(Contains("AT+CCLK?")));
    world.trace.ExpectNoLog("Uptime current");
    EXPECT_FALSE(Files::Exists(kLightbar));
    // All that stands before it goes on.
    for (const char* command : {"at^sysinfo", "at!getband?", "AT*CNTI=0", "at+ecio?", "at!gstatus?",
                                "AT+CREG?", "AT+CMGL=\"REC UNREAD\"", "at!GSMINFO?"}) {
        EXPECT_GT(world.trace.CommandTimes(command).size(), 2u) << command;
    }
}

TEST(SignalPoll, ASilentPassTakesASecondInsteadOfTwo) {
    World world;
    MakeSilent(world);
    world.Start();
    world.RunFor(12s);
    const std::vector<rig::Duration> times = world.trace.CommandTimes("AT+CSQ");
    ASSERT_GE(times.size(), 3u);
    EXPECT_EQ(times[1] - times[0], 2240ms);
    EXPECT_EQ(times[2] - times[1], 2240ms);
}

// A read takes 131072 bytes at most; what is left over waits for the next reader.
TEST(SignalPoll, AFloodIsReadInPiecesAndForgotten) {
    World world("-d -d -d -d");
    world.modem.AnswerOnce("AT+CSQ", std::string(300000, 'x') + kCsqAnswer);
    world.Start();
    world.RunFor(60s);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_EQ(Files::Read(kLightbar), "+CSQ: 17,99\n");
}

TEST(SignalPoll, AModemThatNeverStopsDoesNotHoldTheDaemon) {
    struct Row {
        std::size_t bytes;  // every 20 ms
        char byte;
    };
    for (const Row& row : {Row{100, 'x'}, Row{100, '\0'}, Row{1000, 'x'}, Row{1000, '\0'}}) {
        SCOPED_TRACE(std::to_string(row.bytes) + " of " + std::to_string(row.byte));
        World world;
        world.Start();
        world.RunFor(5s);
        world.clock.Every(20ms, [&] { world.modem.Say(std::string(row.bytes, row.byte)); });
        world.RunFor(180s);
        EXPECT_GE(world.trace.CommandsMatching("AT+CSQ").size(), 4u);
        world.daemon.Signal(SIGTERM);
        EXPECT_EQ(world.RunToExit(120s), 0);
    }
}

TEST(SignalPoll, UnaskedLinesReachTheLogAtADebugLevel) {
    World world("-USB305 -d");
    world.Start();
    ASSERT_TRUE(world.RunUntilCommand("AT+CSQ", 30s));
    world.RunFor(2s);  // into the pause at the end of the pass
    world.modem.Say("\r\n^RSSI: 3\r\nOK\r\n");
    world.RunFor(20s);
    EXPECT_EQ(world.trace.CountLog("Unsolicited message: ^RSSI: 3\r"), 1u);
    world.trace.ExpectNoLog("Unsolicited message: OK");
}

}  // namespace

// From the first log line to the main loop, for every card and every order of the options.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Lines = std::vector<std::string>;

Lines FirstOf(const Lines& all, std::size_t count) {
    return Lines(all.begin(), all.begin() + static_cast<long>(std::min(count, all.size())));
}

struct Card {
    const char* option;
    const char* message;
    bool is_lte;
    bool asks_text_mode;
};

const Card kCards[] = {
    {"", "", false, false},
    {"-881", "card type set to Sierra 881", false, true},
    {"-USB305", "card type set to Sierra USB 305 Lightning", false, false},
    {"-mc75i", "card type set to Centerion MC75i", false, false},
    {"-E362", "card type set to Novatel E362/USB551L", true, false},
    {"-E371", "card type set to Novatel E371/MC679", true, false},
};

class StartUpOfEveryCard : public testing::TestWithParam<Card> {};

TEST_P(StartUpOfEveryCard, SaysWhatItFindsInThisOrder) {
    World world(GetParam().option);
    world.Start();
    world.RunFor(2s);
    Lines expected = {
        "v1.45 starting",
        "Writing pid 4242 to pidfile '/var/run/modemd.pid'",
        "file /etc/ssh/ssh_host_dsa_key is present",
        "uptime cutoff set to 600 seconds",
    };
    if (*GetParam().message != '\0') expected.push_back(GetParam().message);
    EXPECT_EQ(world.trace.Log(), expected);
    EXPECT_EQ(Files::Read("/var/run/modemd.pid"), "4242");
}

TEST_P(StartUpOfEveryCard, BringsTheModemIntoAKnownState) {
    World world(GetParam().option);
    world.Start();
    world.RunFor(10s);
    Lines expected = {"AT"};
    if (GetParam().is_lte) expected.push_back("ATE0");
    expected.push_back("AT+CREG=2");
    if (GetParam().asks_text_mode) expected.push_back("AT+CMGF=1");
    EXPECT_EQ(FirstOf(world.trace.Commands(), expected.size()), expected);
    EXPECT_EQ(world.trace.CountLog(GetParam().asks_text_mode ? "Modem supports CMGF SMS"
                                                             : "Modem does not support CMGF SMS"),
              1u);
}

TEST_P(StartUpOfEveryCard, TakesTheInterfaceUpForLteOnly) {
    World world(GetParam().option);
    world.Start();
    world.RunFor(1s);
    EXPECT_EQ(world.trace.Shell(),
              GetParam().is_lte ? Lines{"ifconfig wwan0 0.0.0.0 up &> /dev/null"} : Lines{});
}

TEST_P(StartUpOfEveryCard, LeavesAHeaderWithoutTimeStampInItsOwnLog) {
    World world(GetParam().option);
    world.modem.Answer("AT+GMM", "\r\nTestModel\r\n\r\nOK\r\n");
    world.modem.Answer("AT+GSN", "\r\n001017000000115\r\n\r\nOK\r\n");
    world.modem.Answer("AT+CNUM", "\r\n+CNUM: \"Line 1\",\"2015550142\",129\r\n\r\nOK\r\n");
    world.modem.Answer("AT$NWMDN", "\r\n2015550142\r\n\r\nOK\r\n");
    world.Start();
    world.RunFor(40s);
    const std::string option = GetParam().option;
    const bool has_model = option != "" && option != "-mc75i";
    const bool has_number = option != "";
    EXPECT_EQ(Files::Read("/var/log/csq"),
              std::string("# ") + (has_model ? "TestModel" : "Unknown") + ", 001017000000115, " +
                  (has_number ? "2015550142" : "Unknown") + "\n");
}

INSTANTIATE_TEST_SUITE_P(Cards, StartUpOfEveryCard, testing::ValuesIn(kCards),
                         [](const testing::TestParamInfo<Card>& test) {
                             const std::string option = test.param.option;
                             return option.empty() ? "generic" : "card_" + option.substr(1);
                         });

// By hand: a canned command takes 1.04 s; a transaction 70 ms, its wait, and 50 ms for each read
// that finds something. The times are those of the commands' carriage returns, 20 ms into each.
TEST(StartUp, KeepsItsPaceToTheMillisecond) {
    World world;
    world.Start();
    world.RunFor(13s);
    struct Row {
        const char* command;
        int milliseconds;
    };
    const Row expected[] = {
        {"AT", 20},
        {"AT+CREG=2", 1060},
        {"at+gsn", 2180},
        {"AT+CGDCONT?", 2300},
        {"AT+CSQ", 2420},        // the first pass begins at 2.400 s
        {"AT+CGDCONT?", 3660},   // it was answered, and the status timer had never run
        {"AT+CSQ", 5780},        // 2 s behind the end of the status work
        {"AT+CSQ", 9020},        // the status timer has counted 3.24 s: no status work between
        {"AT+CGDCONT?", 10260},  // and now 6.48 s
        {"AT+CSQ", 12380},
    };
    const std::vector<rig::Command>& commands = world.trace.TimedCommands();
    ASSERT_EQ(commands.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(commands[i].text, expected[i].command);
        EXPECT_EQ(commands[i].at, expected[i].milliseconds * 1000);
    }
}

TEST(StartUp, ACannedCommandFillsEightyBytesAndATransactionOnlyItsOwn) {
    World world;
    world.Start();
    world.RunFor(2s);
    std::string padded = "AT";
    padded.resize(80, '\0');
    EXPECT_EQ(world.trace.Texts(rig::Kind::kWrite),
              (Lines{padded, "\r", "\n", "AT+CREG=2", "\r", "\n"}));
}

TEST(StartUp, WaitsLongerForErrorsWhileTheHostKeyIsMissing) {
    World world;
    Files::Remove("/etc/ssh/ssh_host_dsa_key");
    world.Start();
    world.RunFor(1s);
    EXPECT_EQ(world.trace.Log().at(2), "file /etc/ssh/ssh_host_dsa_key is not present");
    EXPECT_EQ(world.trace.Log().at(3), "uptime cutoff set to 1800 seconds");
}

TEST(StartUp, WithoutADeviceItSaysHowToStartItAndEnds) {
    World world(rig::Exactly{{"-E362", "-d"}});
    world.daemon.OnTerminal();
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 1);
    EXPECT_EQ(world.trace.Log(), (Lines{
                                     "v1.45 starting",
                                     "Writing pid 4242 to pidfile '/var/run/modemd.pid'",
                                     "file /etc/ssh/ssh_host_dsa_key is present",
                                     "uptime cutoff set to 600 seconds",
                                     "card type set to Novatel E362/USB551L",
                                     "DEBUG: debug mode 1",
                                     "No /dev/device path given, exiting",
                                 }));
    EXPECT_THAT(world.daemon.ErrorOutput(), StartsWith("usage: modemd "));
    EXPECT_EQ(Files::Read("/var/run/modemd.pid"), "4242");
    EXPECT_FALSE(Files::Exists("/var/log/csq"));
    EXPECT_TRUE(world.trace.Shell().empty());
}

TEST(StartUp, PrintsNothingWhenItIsStartedRight) {
    World world("-d -d -d -d");
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(world.daemon.ErrorOutput(), "");
}

// Guards oddity debug-level-falls.
TEST(StartUp, AProvisioningFileTakesTheDebugOptionsBack) {
    World world("-d -d");
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=no\n");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.trace.Log().at(4), "DEBUG: debug mode 2");
    for (const std::string& line : world.trace.Log()) {
        EXPECT_THAT(line, Not(HasSubstr("Sending command"))) << line;
    }
}

}  // namespace

// The two files that steer the running daemon, read again when their time changes.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using Lines = std::vector<std::string>;

constexpr char kPpp[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
constexpr char kProvision[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
constexpr char kMissing[] = "DEBUG:  ReadPppConfigFile(): CM_APN entry missing ";

// Empty when there is none.
std::string LastOf(const Lines& lines) {
    return lines.empty() ? "" : lines.back();
}

// Lines of the log that speak of the PPP file.
Lines ConfigLog(const World& world) {
    Lines lines;
    for (const std::string& line : world.trace.Log()) {
        for (const char* start : {"Note: Config", "Error:  The APN", "Config option",
                                  "Setting Context 3", "DEBUG:  ReadPppConfigFile"}) {
            if (line.rfind(start, 0) == 0) lines.push_back(line);
        }
    }
    return lines;
}

struct ApnRow {
    const char* name;
    std::string line;
    Lines expected;
};

class ApnLine : public testing::TestWithParam<ApnRow> {};

TEST_P(ApnLine, IsTakenAsTheTableSays) {
    World world("-E362");
    world.files.Write(kPpp, GetParam().line + "\n");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(ConfigLog(world), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ApnLine,
    testing::Values(
        ApnRow{"BlanksGoAndCaseStays", "CM_APN= My.APN ", {"Setting Context 3 APN to 'My.APN'"}},
        ApnRow{"BlanksInsideGo",
               "CM_APN=apn with\tspace\r",
               {"Setting Context 3 APN to 'apnwithspace'"}},
        ApnRow{"BadCharacter",
               "CM_APN=Internet#1",
               {"Error:  The APN 'internet#1' contains invalid characters"}},
        ApnRow{"TwentyCharacters",
               "CM_APN=A2345678901234567890",
               {"Setting Context 3 APN to 'A2345678901234567890'"}},
        ApnRow{"TwentyOneCharacters",
               "CM_APN=A23456789012345678901",
               {"Error:  The APN 'a23456789012345678901' is too long"}},
        ApnRow{"BadAndTooLong",
               "CM_APN=A2345678901234567890#",
               {"Error:  The APN 'a2345678901234567890#' contains invalid characters"}},
        ApnRow{"Empty", "CM_APN=", {"Note: Config file APN is empty"}},
        ApnRow{"BlanksOnly", "CM_APN=  \t", {"Note: Config file APN is empty"}},
        ApnRow{"ASecondSeparatorEndsIt", "CM_APN=one=two", {"Setting Context 3 APN to 'one'"}},
        ApnRow{"ACommentIsNone", "# CM_APN=other", {}},
        ApnRow{"OtherCaseOfTheKey", "cm_apn=other", {}},
        ApnRow{
            "TheFirstOfTwo", "CM_APN=first\nCM_APN=second", {"Setting Context 3 APN to 'first'"}}),
    [](const testing::TestParamInfo<ApnRow>& test) { return test.param.name; });

TEST(PppFile, ItsLastCharacterIsDoubledWithoutALineEnd) {
    World world("-E362");
    world.files.Write(kPpp, "CM_APN=internet");
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(ConfigLog(world), Lines{"Setting Context 3 APN to 'internett'"});
}

TEST(PppFile, SwitchesTheInterfaceOffForNoOnly) {
    struct Row {
        const char* value;
        bool enabled;
        const char* message;
    };
    const Row rows[] = {
        {"NO", false, "Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled"},
        {"no", false, "Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled"},
        {"n o", false, "Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled"},
        {"off", true, "Config option CM_ENABLE_INTERFACE is 'off'"},
        {"0", true, "Config option CM_ENABLE_INTERFACE is '0'"},
        {"False", true, "Config option CM_ENABLE_INTERFACE is 'false'"},
        {"YES", true, "Config option CM_ENABLE_INTERFACE is 'yes'"},
        {"", true, "Config option CM_ENABLE_INTERFACE is ''"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        World world("-E371");
        world.files.Write(kPpp, std::string("CM_ENABLE_INTERFACE=") + row.value + "\n");
        world.Start();
        world.RunFor(60s);
        EXPECT_EQ(ConfigLog(world), Lines{row.message});
        EXPECT_EQ(Files::Exists("/var/log/wirelessdial_notdialing"), !row.enabled);
    }
}

// Both messages name CM_ENABLE_INTERFACE.
// Guards oddity route-logged-as-enable.
TEST(PppFile, SwitchesTheDefaultRouteOffForNoOnly) {
    struct Row {
        const char* value;
        const char* message;
        bool has_route;
    };
    const Row rows[] = {
        {"No",
         "Config option CM_ENABLE_INTERFACE is 'no', WAN interface default route setting is off",
         false},
        {"off", "Config option CM_ENABLE_INTERFACE is 'off'", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        World world("-E371");
        world.files.Write(kPpp, std::string("CM_DEFAULTROUTE=") + row.value + "\n");
        world.Start();
        world.RunFor(90s);
        EXPECT_EQ(ConfigLog(world), Lines{row.message});
        EXPECT_THAT(world.trace.Shell(),
                    Contains(row.has_route ? "udhcpc -T 3 -S -b -i wwan0 &> /dev/null"
                                           : "udhcpc -T 3 -S -b -i wwan0 -G  &> /dev/null"));
    }
}

// The line names CM_APN whichever of the three keys is missing.
// Guards oddity missing-entry-is-apn.
TEST(PppFile, TellsEachMissingKeyAtADebugLevel) {
    World world("-d");
    world.files.Write(kProvision, "DEBUG_MODE=-1\n");
    world.files.Write(kPpp, "OTHER=1\n");
    world.Start();
    world.RunFor(10s);
    EXPECT_EQ(ConfigLog(world), (Lines{kMissing, kMissing, kMissing}));
}

TEST(PppFile, IsReadAgainWhenItsTimeChangesAndOnlyThen) {
    World world("-E362");
    world.files.Write(kPpp, "CM_APN=one\n");
    world.Start();
    world.RunFor(120s);
    EXPECT_EQ(ConfigLog(world), Lines{"Setting Context 3 APN to 'one'"});
    world.files.Write(kPpp, "CM_APN=two\n");
    world.RunFor(60s);
    EXPECT_EQ(LastOf(ConfigLog(world)), "Setting Context 3 APN to 'two'");
    world.files.Touch(kPpp);
    world.RunFor(60s);
    EXPECT_EQ(ConfigLog(world),
              (Lines{"Setting Context 3 APN to 'one'", "Setting Context 3 APN to 'two'",
                     "Setting Context 3 APN to 'two'"}));
}

TEST(PppFile, IsReadFirstInEveryPassThoughTheModemIsSilent) {
    World world("-E362");
    world.files.Write(kPpp, "CM_APN=one\n");
    world.modem.Answer("AT+CSQ", "");
    world.Start();
    world.RunFor(60s);
    const Lines commands = world.trace.Commands();
    const auto apn = std::find(commands.begin(), commands.end(), "AT+CGDCONT=3,\"ipv4v6\",\"one\"");
    const auto query = std::find(commands.begin(), commands.end(), "at$qcsimstat?");
    EXPECT_LT(apn, query);
    world.files.Write(kPpp, "CM_APN=two\n");
    world.RunFor(20s);
    EXPECT_EQ(LastOf(ConfigLog(world)), "Setting Context 3 APN to 'two'");
}

TEST(ProvisioningFile, IsNotReadWhileTheModemIsSilent) {
    World world("-E362");
    world.Start();
    world.RunFor(30s);
    world.modem.Answer("AT+CSQ", "");
    world.RunFor(10s);
    world.files.Write(kProvision, "DEBUG_MODE=1\n");
    world.RunFor(60s);
    world.trace.ExpectNoLog("DEBUG_MODE set to 1");
    world.modem.Forget("AT+CSQ");
    world.RunFor(20s);
    EXPECT_EQ(world.trace.CountLog("DEBUG_MODE set to 1"), 1u);
}

TEST(PppFile, AChangeWithinTheSameSecondIsNotSeen) {
    World world("-E362");
    world.Start();
    world.RunFor(100200ms);
    world.files.Write(kPpp, "CM_APN=one\n");
    ASSERT_TRUE(world.RunUntilLog("Setting Context 3 APN to 'one'", 30s));
    world.files.Write(kPpp, "CM_APN=two\n");
    world.files.SetAge(kPpp,
                       world.clock.Now() - 100700ms);  // written half a second behind the first
    world.RunFor(60s);
    EXPECT_EQ(ConfigLog(world), Lines{"Setting Context 3 APN to 'one'"});
    world.files.SetAge(kPpp, world.clock.Now());  // an older time is a change, too
    world.RunFor(60s);
    EXPECT_EQ(LastOf(ConfigLog(world)), "Setting Context 3 APN to 'two'");
}

TEST(PppFile, ThatGoesKeepsItsValuesAndIsReadWhenItComesBack) {
    World world("-E362");
    world.files.Write(kPpp, "CM_ENABLE_INTERFACE=no\n");
    world.Start();
    world.RunFor(60s);
    Files::Remove(kPpp);
    world.trace.Clear();
    world.RunFor(60s);
    EXPECT_TRUE(ConfigLog(world).empty());
    EXPECT_TRUE(Files::Exists("/var/log/wirelessdial_notdialing"));
    world.files.Write(kPpp, "CM_ENABLE_INTERFACE=yes\n");
    world.RunFor(120s);
    EXPECT_EQ(ConfigLog(world), Lines{"Config option CM_ENABLE_INTERFACE is 'yes'"});
    EXPECT_FALSE(Files::Exists("/var/log/wirelessdial_notdialing"));
}

TEST(PppFile, OfRubbishOrOfGreatSizeDoesNoHarm) {
    World world("-E362 -d");
    std::string rubbish;
    for (int i = 0; i < 20000; ++i) rubbish += static_cast<char>(i * 7919 >> 3);
    world.files.Write(kPpp, rubbish);
    world.files.Write(kProvision, rubbish);
    world.Start();
    world.RunFor(30s);
    world.files.Write(kPpp, "CM_APN=good\n" + std::string(8 << 20, 'x'));
    world.RunFor(30s);
    EXPECT_EQ(ConfigLog(world).at(0), "Setting Context 3 APN to 'good'");
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(60s), 0);
}

// Both change while the contexts are asked for: the status file is written as it was, at the old
// level, then each file is read.
TEST(ProvisioningFile, IsReadBehindTheStatusFileAndBeforeThePppFile) {
    World world;
    world.Start();
    world.RunFor(20s);
    ASSERT_TRUE(world.RunUntilCommand("AT+CGDCONT?", 8s));
    world.files.Write(kProvision, "DEBUG_MODE=2\n");
    world.files.Write(kPpp, "CM_ENABLE_INTERFACE=yes\n");
    world.trace.Clear();
    world.RunFor(1s);
    EXPECT_EQ(world.trace.Log(), (Lines{"DEBUG_MODE set to 2", kMissing,
                                        "Config option CM_ENABLE_INTERFACE is 'yes'", kMissing}));
}

TEST(ProvisioningFile, WithoutSyncTimeTurnsItOff) {
    for (const char* text : {"SYNC_TIME=no\n", "DEBUG_MODE=0\n", "SYNC_TIME=\n", "SYNC_TIME=1\n"}) {
        SCOPED_TRACE(text);
        World world("-881");
        world.files.Write(kProvision, text);
        world.Start();
        world.RunFor(60s);
        EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 0u);
    }
}

TEST(ProvisioningFile, SyncTimeAloneQuietsTheLogAndSynchronisesAtOnce) {
    World world("-881 -d -d");
    world.Start();
    world.RunFor(100s);
    ASSERT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 1u);
    world.trace.Clear();
    world.files.Write(kProvision, "SYNC_TIME = YES \n");
    ASSERT_TRUE(world.RunUntilLog(
        "SYNC_TIME config option is YES.  Time sync will attempt every 4 hours", 60s));
    world.RunFor(30s);
    EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 1u);
    world.trace.Clear();
    world.RunFor(60s);
    world.trace.ExpectNoLog("Sending command");
}

TEST(ProvisioningFile, ThatGoesTurnsTheTimeSyncOnAndKeepsTheDebugLevel) {
    World world("-881");
    world.files.Write(kProvision, "DEBUG_MODE=1\n");
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 0u);
    Files::Remove(kProvision);
    world.clock.Jump(5h);  // the time is asked for when its timer has expired, not at once
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 1u);
    EXPECT_GT(world.trace.CountLogContaining("Sending command: AT+CCLK?"), 0u);
}

struct DebugRow {
    const char* name;
    const char* value;
    const char* message;  // null for none
    bool speaks;          // afterwards, having started with -d -d
};

class DebugMode : public testing::TestWithParam<DebugRow> {};

TEST_P(DebugMode, IsTakenAsTheTableSays) {
    World world("-d -d");
    world.files.Write(kProvision, std::string("DEBUG_MODE=") + GetParam().value + "\n");
    world.Start();
    world.RunFor(20s);
    if (GetParam().message != nullptr) {
        EXPECT_EQ(world.trace.CountLog(GetParam().message), 1u);
    } else {
        world.trace.ExpectNoLog("DEBUG_MODE set to");
    }
    EXPECT_EQ(world.trace.CountLog("Sending command: AT+CSQ") > 0, GetParam().speaks);
}

INSTANTIATE_TEST_SUITE_P(
    Values, DebugMode,
    testing::Values(DebugRow{"Three", "3", "DEBUG_MODE set to 3", true},
                    DebugRow{"Zero", "0", "DEBUG_MODE set to 0", false},
                    DebugRow{"MinusOne", "-1", "DEBUG_MODE set to -1", true},
                    DebugRow{"BlanksInside", " 1 0 ", "DEBUG_MODE set to 10", true},
                    DebugRow{"LoneMinus", "-", "DEBUG_MODE set to 0", false},
                    DebugRow{"NoNumber", "2x", nullptr, true},
                    DebugRow{"Plus", "+2", nullptr, true}, DebugRow{"Empty", "", nullptr, true}),
    [](const testing::TestParamInfo<DebugRow>& test) { return test.param.name; });

}  // namespace

// Single stories: the MC7700, the long operator list, and when each query is asked.
#include <gmock/gmock.h>

#include <algorithm>

#include "published.h"

using namespace std::chrono_literals;
using rig::Duration;
using rig::Files;
using rig::World;
using testing::AllOf;
using testing::Each;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;
using testing::Not;

namespace {

// Time between two commands that follow each other.
std::vector<Duration> Gaps(const std::vector<Duration>& times) {
    std::vector<Duration> gaps;
    for (std::size_t i = 1; i < times.size(); ++i) gaps.push_back(times[i] - times[i - 1]);
    return gaps;
}

constexpr auto kLongestPass = 12s;

}  // namespace

TEST(Mc7700, IsReadByItsOwnLabels) {
    World world("-881");
    Teach(world, {{"at+gmm", {"MC7700"}},
                  {"AT+CREG?", {"+CREG: 0,1"}},
                  {"at!gstatus?",
                   {"System mode:   WCDMA\t\tPS state:    Attached", "Serving Cell:  9 (9)",
                    "RX level (dBm):-71", "RX level C0:   -80\t\tLAC:         1A2B (6699)",
                    "RX level C1:   -81\t\tCell ID:     0A1B (2587)"}}});
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(1U, world.trace.CountLog("Setting Specific model number to MC7700"));
    const std::string text = Files::Read(kStatistics);
    EXPECT_THAT(text, HasSubstr("\nCELLMODEM_MODEL=MC7700\n"));
    EXPECT_THAT(text, HasSubstr("\nCELLMODEM_RX_LEVEL=\n"
                                "CELLMODEM_RX_LEVEL_C0=-80\n"
                                "CELLMODEM_RX_LEVEL_C1=-81\n"
                                "CELLMODEM_LOCATION_AREA_CODE=1A2B (6699)\n"
                                "CELLMODEM_SERVING_CELL=0A1B (2587)\n"));
}

// Once it reports LTE, the lines behind are read as LTE lines, page by page.
TEST(Mc7700, FollowsTheSystemOfEachPage) {
    World world("-881");
    const Reply lte = {"at!gstatus?",
                       {"WCDMA band:    WCDMA1900", "System mode:   LTE\t\tPS state:    Attached",
                        "LTE band:      B17\t\tLTE bw:      10 MHz", "WCDMA channel: 9662"}};
    const Reply wcdma = {"at!gstatus?",
                         {"LTE band:      B17\t\tLTE bw:      10 MHz",
                          "System mode:   WCDMA\t\tPS state:    Attached",
                          "WCDMA band:    WCDMA850", "WCDMA channel: 4385"}};
    Teach(world, {{"at+gmm", {"MC7700"}}, lte});
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_LTE_BAND=B17\n"));
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_WCDMA_BAND=WCDMA1900\n"
                                                    "CELLMODEM_WCDMA_CHANNEL=\n"));
    Teach(world, {wcdma});
    world.RunFor(60s);
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_LTE_BAND=\n"));
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_WCDMA_BAND=WCDMA850\n"
                                                    "CELLMODEM_WCDMA_CHANNEL=4385\n"));
}

class OperatorList : public testing::Test {
  protected:
    static constexpr int kLines = 3000;

    OperatorList() {
        for (int i = 0; i < kLines; ++i) {
            list.push_back("+COPN: \"" + std::to_string(900000 + i) + "\",\"Net " +
                           std::to_string(i) + "\"");
        }
        Teach(world, {{"AT+COPN", list}});
    }
    void MoveTo(const std::string& plmn) { Teach(world, {{"at!GSMINFO?", {"PLMN: " + plmn}}}); }

    Lines list;
    World world{"-881"};
};

TEST_F(OperatorList, OfThreeThousandIsAskedForOnceForEachNetwork) {
    MoveTo("902 999");
    world.Start();
    world.RunFor(10min);
    EXPECT_EQ(1U, world.trace.CommandTimes("AT+COPN").size());
    EXPECT_EQ(1U, world.trace.CountLog("Carrier name set to \"Net 2999\""));
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_CARRIER=Net 2999\n"
                                                    "CELLMODEM_CARRIER_PLMN=902999\n"));
    MoveTo("900 001");
    world.RunFor(10min);
    EXPECT_EQ(2U, world.trace.CommandTimes("AT+COPN").size());
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_CARRIER=Net 1\n"
                                                    "CELLMODEM_CARRIER_PLMN=900001\n"));
}

// "90000" is part of "900000": the first line of the list that holds it wins.
TEST_F(OperatorList, IsSearchedForTheNumberAnywhereInALine) {
    MoveTo("900 00");
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_CARRIER=Net 0\n"
                                                    "CELLMODEM_CARRIER_PLMN=90000\n"));
    // And "900000" holds what is kept, so it counts as the same network.
    MoveTo("900 001");
    world.RunFor(60s);
    EXPECT_EQ(1U, world.trace.CommandTimes("AT+COPN").size());
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_CARRIER=Net 0\n"
                                                    "CELLMODEM_CARRIER_PLMN=90000\n"));
}

TEST_F(OperatorList, IsAskedForAgainWhileItDoesNotKnowTheNumber) {
    MoveTo("123 45");
    world.Start();
    world.RunFor(5min);
    EXPECT_GE(world.trace.CommandTimes("AT+COPN").size(), 8U);
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("\nCELLMODEM_CARRIER=Unknown\n"
                                                    "CELLMODEM_CARRIER_PLMN=12345\n"));
}

TEST(RegistrationPeriod, IsFiveSecondsUntilRegistered) {
    World world("-881");
    Teach(world, {{"AT+CREG?", {"+CREG: 2,2"}}});
    world.Start();
    world.RunFor(5min);
    EXPECT_THAT(Gaps(world.trace.CommandTimes("AT+CREG?")),
                AllOf(Not(IsEmpty()), Each(Ge(5s)), Each(Le(5s + kLongestPass))));
    EXPECT_EQ("Searching\n", Files::Read("/var/log/wirelessactivation_status"));

    Teach(world, {{"AT+CREG?", {"+CREG: 2,1,\"1A2B\",\"01C3\""}}});
    world.RunFor(60s);
    world.trace.Clear();
    world.RunFor(10min);
    EXPECT_THAT(Gaps(world.trace.CommandTimes("AT+CREG?")),
                AllOf(Not(IsEmpty()), Each(Ge(30s)), Each(Le(30s + kLongestPass))));
    EXPECT_EQ("Reg Home\n", Files::Read("/var/log/wirelessactivation_status"));
}

TEST(StatusQueries, TryTheIdentityAgainUntilItIsTold) {
    World world("-881");
    for (const char* command : {"at+gsn", "at+gmi", "at+gmm", "at!gver?", "at^hver", "AT!PRIID?"}) {
        world.modem.Answer(command, "");
    }
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ("Unknown\n", Files::Read("/var/log/wireless.serialno"));
    for (const char* command : {"at+gsn", "at+gmi", "at+gmm", "at!gver?", "at^hver", "AT!PRIID?"}) {
        world.modem.Forget(command);
    }
    world.RunFor(60s);
    const std::string text = Files::Read(kStatistics);
    for (const char* key : {"ESN", "MANU", "MODEL", "FIRMWARE_V", "HARDWARE_V", "SKU_PRIID"}) {
        EXPECT_THAT(text, Not(HasSubstr(std::string("CELLMODEM_") + key + "=Unknown"))) << key;
    }
}

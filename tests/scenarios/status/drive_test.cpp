// The drive through town that the modems have in their profiles, round and round for an hour.
#include <gmock/gmock.h>

#include <fstream>
#include <set>

#include "published.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using testing::AllOf;
using testing::Contains;
using testing::Gt;
using testing::IsSubsetOf;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr char kLightbar[] = "/var/log/lightbar";
constexpr char kActivation[] = "/var/log/wirelessactivation_status";

// All that the file has ever said.
std::set<std::string> Said(const World& world, const char* path) {
    std::set<std::string> texts;
    for (const rig::FileVersion& version : world.trace.Versions(path)) texts.insert(version.text);
    return texts;
}

// All values of a key of the statistics file.
std::set<std::string> Values(const World& world, const std::string& key) {
    std::set<std::string> values;
    for (const rig::FileVersion& version : world.trace.Versions(kStatistics)) {
        const auto found = version.text.find("\nCELLMODEM_" + key + "=");
        if (found == std::string::npos) continue;
        const auto start = version.text.find('=', found) + 1;
        values.insert(version.text.substr(start, version.text.find('\n', start) - start));
    }
    return values;
}

class Drive : public testing::Test {
  protected:
    static void LiveAnHour(World& world) {
        world.trace.Watch(kStatistics);
        world.trace.Watch(kLightbar);
        world.trace.Watch(kActivation);
        world.modem.Control("drive on");
        world.Start();
        world.RunFor(60min);
    }
};

}  // namespace

TEST_F(Drive, ShowsInEveryFile) {
    for (const char* card : {"-881", "-USB305", "-E362", "-E371"}) {
        SCOPED_TRACE(card);
        World world(card);
        LiveAnHour(world);
        EXPECT_THAT(Said(world, kActivation), IsSupersetOf({"Reg Home\n", "Reg Roam\n"}));
        EXPECT_THAT(Said(world, kLightbar), SizeIs(Gt(8U)));
        EXPECT_THAT(Values(world, "LOWSPEED_CSQ"), AllOf(SizeIs(Gt(8U)), Contains("99")));
        EXPECT_THAT(Values(world, "MDN"), Not(Contains("")));
    }
}

TEST_F(Drive, ChangesServiceCarrierAndCellOfThe881) {
    World world("-881");
    LiveAnHour(world);
    EXPECT_THAT(Values(world, "SERVICE_TYPE"), IsSupersetOf({"HSPA", "UMTS", "EDGE"}));
    EXPECT_THAT(Values(world, "CARRIER"), IsSupersetOf({"Example Net", "Harbor Cellular"}));
    EXPECT_THAT(Values(world, "SERVING_CELL"), SizeIs(Gt(3U)));
    EXPECT_THAT(Values(world, "ROAMING"), testing::ElementsAre("0"));
}

TEST_F(Drive, CostsTheE362ItsDataCallInTheTunnel) {
    World world("-E362");
    LiveAnHour(world);
    EXPECT_THAT(Values(world, "SERVICE_TYPE"), IsSupersetOf({"LTE", "WCDMA", "No Service"}));
    // One tunnel of 70 seconds in each round of ten minutes.
    EXPECT_EQ(6U, world.trace.CountLog("No service after 30 seconds, sending modem a disconnect."));
}

// A display that opens the lightbar once follows the signal for as long as the daemon runs.
TEST_F(Drive, KeepsTheLightbarForADisplayThatHoldsItOpen) {
    World world("-881");
    world.Start();
    ASSERT_TRUE(world.RunUntil([] { return Files::Exists(kLightbar); }, 60s));
    world.modem.Control("signal 3 0");
    world.RunFor(20s);
    std::ifstream reader(kLightbar);
    world.modem.Control("signal 25 0");
    world.RunFor(20s);
    std::string line;
    ASSERT_TRUE(std::getline(reader, line));
    EXPECT_EQ("+CSQ: 25,0", line);
}

TEST_F(Drive, NeverShowsAnythingButSignalLinesInTheLightbar) {
    World world("-881");
    LiveAnHour(world);
    EXPECT_GT(world.trace.Versions(kLightbar).size(), 500U);
    for (const std::string& text : Said(world, kLightbar)) {
        EXPECT_THAT(text, testing::MatchesRegex("\\+CSQ: [0-9]+,[0-9]+\n"));
    }
}

// An hour in the life of each card, its published files checked whole.
#include <gmock/gmock.h>

#include "hour_cards.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

constexpr auto kSettled = 100s;  // identity, registration and data call are asked every 30 s

void ExpectPlace(const World& world, const HourCard& card, const Place& place) {
    ExpectStatistics(world, With(card.home_file, place.changes));
    for (const std::string& file : place.small_files) {
        const auto colon = file.find(": ");
        const std::string path = "/var/log/" + file.substr(0, colon);
        if (colon == std::string::npos) {
            EXPECT_FALSE(Files::Exists(path)) << path;
        } else {
            EXPECT_EQ(file.substr(colon + 2) + "\n", Files::Read(path)) << path;
        }
    }
}

void DriveTo(World& world, std::chrono::minutes minute, const HourCard& card, const Place& place) {
    SCOPED_TRACE("minute " + std::to_string(minute.count()));
    world.RunFor(minute - world.clock.Now());
    Teach(world, place.replies);
    world.RunFor(kSettled);
    ExpectPlace(world, card, place);
}

void LiveAnHour(const HourCard& card) {
    SCOPED_TRACE(card.name);
    World world(card.options);
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=no\n");
    world.router.SetAddress("10.64.0.2");
    world.router.SetTxBytes(
        [](rig::Duration now) { return static_cast<std::uint64_t>(now.count()); });
    world.trace.Watch(kStatistics);
    Teach(world, card.home.replies);
    world.Start();
    world.RunUntil([&] { return !world.trace.Versions(kStatistics).empty(); }, 30s);
    ASSERT_FALSE(world.trace.Versions(kStatistics).empty());
    ExpectStatistics(world.trace.Versions(kStatistics).front(),
                     With(card.home_file, card.at_start_up));

    DriveTo(world, 5min, card, card.home);
    DriveTo(world, 20min, card, card.town);
    DriveTo(world, 35min, card, card.tunnel);
    DriveTo(world, 50min, card, card.back);
    world.RunFor(60min - world.clock.Now());
    ExpectPlace(world, card, card.back);
    // A silent modem would have stopped the files.
    EXPECT_GT(world.trace.Versions(kStatistics).size(), 300U);
}

}  // namespace

TEST(Hour, OfTheSierra881) {
    LiveAnHour(HourOf881());
}

TEST(Hour, OfTheUsb305) {
    LiveAnHour(HourOfUsb305());
}

TEST(Hour, OfTheMc75i) {
    LiveAnHour(HourOfMc75i());
}

TEST(Hour, OfTheE362) {
    LiveAnHour(HourOfE362());
}

TEST(Hour, OfTheE371) {
    LiveAnHour(HourOfE371());
}

TEST(Hour, OfAGenericModem) {
    LiveAnHour(HourOfGeneric());
}

// What runs how often: counted over a simulated day, and with the clock moved under the timers.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Duration;
using rig::Kind;
using rig::World;
using Commands = std::vector<std::string>;
using Times = std::vector<Duration>;

// The smallest and the largest distance between two neighbours.
std::pair<Duration, Duration> Distances(const Times& times) {
    Duration least = Duration::max();
    Duration most = Duration::zero();
    for (std::size_t i = 1; i < times.size(); ++i) {
        least = std::min(least, times[i] - times[i - 1]);
        most = std::max(most, times[i] - times[i - 1]);
    }
    return {least, most};
}

TEST(Schedule, TheFirstAnsweredPassDoesStatusWorkAndAsksForTheTimeAtOnce) {
    World world("-881");
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=yes\n");
    world.Start();
    ASSERT_TRUE(world.RunUntilCommand("AT+CCLK?", 60s));
    EXPECT_EQ(world.trace.CommandTimes("AT+CSQ").size(), 1u);
    EXPECT_EQ(world.trace.CommandTimes("AT+CGDCONT?").size(), 2u);  // identity pass and status work
    EXPECT_LT(world.trace.CommandTimes("AT+CSQ").at(0),
              world.trace.CommandTimes("AT+CGDCONT?").at(1));
}

TEST(Schedule, EachPassAsksInAFixedOrder) {
    struct Row {
        const char* card;
        Commands pass;
    };
    for (const Row& row :
         {Row{"-881", {"at^sysinfo", "at!getband?", "AT*CNTI=0", "at+ecio?", "at!gstatus?"}},
          Row{"-E362", {"at$qcsimstat?", "ATE0", "AT$NWSYSMODE", "AT$NWRSSI=15", "AT+TEMP"}},
          Row{"-E371", {"at$qcsimstat?", "ATE0", "AT$NWRAT?", "AT$NWRSSI=15", "AT+TEMP"}}}) {
        SCOPED_TRACE(row.card);
        World world(row.card);
        world.router.SetAddress("10.1.2.3");
        world.Start();
        world.RunFor(90s);
        const Commands commands = world.trace.Commands();
        std::size_t passes = 0;
        for (auto at = commands.begin(); commands.end() - at >= 5; ++at) {
            if (*at != row.pass[0]) continue;
            ++passes;
            EXPECT_EQ(Commands(at, at + 5), row.pass);
        }
        EXPECT_GT(passes, 5u);
    }
}

TEST(Schedule, OverADayEveryTimerKeepsItsPeriod) {
    World world("-881");
    world.trace.Keep({Kind::kWrite});
    world.modem.Sim().SetHeardLimit(0);
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=yes\n");
    world.Start();
    world.RunFor(24h);
    struct Row {
        const char* command;
        Duration period;
    };
    // A timer is looked at once in a pass, so its period is a lower bound; with everything due at
    // once a pass of this card takes less than 20 s.
    const Row rows[] = {
        {"at!GSMINFO?", 30s},             // identity
        {"AT+CMGL=\"REC UNREAD\"", 15s},  // messages
        {"AT+CREG?", 30s},                // registration, once registered
        {"AT+CCLK?", 14400s},             // network time
        {"AT!ICCID?", 5s},                // card statistics
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        Times times = world.trace.CommandTimes(row.command);
        ASSERT_GT(times.size(), 5u);
        times.erase(times.begin(), times.begin() + 2);  // start-up and the first pass
        EXPECT_GE(Distances(times).first, row.period);
        EXPECT_LT(Distances(times).second, row.period + 20s);
    }
    EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 6u);
}

// Commands of each timer's work heard since `start`.
std::size_t CountSince(const World& world, const char* command, Duration start) {
    const Times times = world.trace.CommandTimes(command);
    return static_cast<std::size_t>(
        std::count_if(times.begin(), times.end(), [&](Duration at) { return at >= start; }));
}

// The wall clock is meant: set back behind a timer's start, the timer has expired; started again,
// it counts as ever.
TEST(Schedule, AClockSetBackMakesEveryRunningTimerExpireAtItsNextTest) {
    World world("-881");
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=yes\n");
    world.Start();
    world.RunFor(100s);
    ASSERT_TRUE(world.RunUntilCommand("AT+CSQ", 60s));  // behind this pass's timed work
    const Duration jump = world.clock.Now();
    world.clock.Jump(-1h);
    world.RunFor(13s);
    for (const char* command : {"at!GSMINFO?", "AT+CMGL=\"REC UNREAD\"", "AT+CREG?", "AT+CCLK?"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(CountSince(world, command, jump), 1u);
    }
    EXPECT_EQ(world.trace.CommandTimes("AT+CCLK?").size(), 2u);
}

TEST(Schedule, AGenericModemIsOnlyAskedForWhatEveryModemKnows) {
    World world;
    world.Start();
    world.RunFor(10min);
    for (const std::string& command : world.trace.Commands()) {
        EXPECT_THAT(command, testing::AnyOf("AT", "AT+CREG=2", "at+gsn", "AT+CGDCONT?", "AT+CSQ",
                                            "AT+CMGD=0,1"));
    }
    EXPECT_EQ(world.trace.CommandTimes("at+gsn").size(), 1u);  // the number does not change
    EXPECT_EQ(world.trace.CountLog("Cannot sync to tower time, unsupported modem"), 1u);
}

}  // namespace

// The clock: set from the network, retried, and jumping while timers run.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::World;

namespace {

constexpr char kRetry[] = "Will check tower time again in 5 minutes";

bool IsDateLine(const std::string& line) {
    return line.compare(0, 9, "/bin/date") == 0;
}

Lines DateLines(const World& world) {
    Lines lines;
    for (const std::string& line : world.trace.Shell()) {
        if (IsDateLine(line)) lines.push_back(line);
    }
    return lines;
}

std::string SetLocal(const std::string& time) {
    return "/bin/date   -s \"" + time + "\" &> /dev/null; /bin/hwclock --systohc &> /dev/null";
}

std::string Line(const std::string& text) {
    return "\r\n" + text + "\r\n\r\nOK\r\n";
}

// The modem's own clock says whole years: 26 is the year 26, and not worth a retry of its own.
// Guards oddity fallback-year-whole.
TEST(TowerTime, OfThe881DoesNotCompleteAShortYearOfTheFallback) {
    World world("-881");
    world.modem.Answer("AT+CCLK?", "\r\nERROR\r\n");
    world.modem.Answer("at!time?", Line("26/03/04\r\n05:07:09"));
    world.Start();
    world.RunFor(30min);
    EXPECT_EQ(world.trace.CountLog("Time from tower does not look valid: 05:07:09 03/04/26"), 1U);
    EXPECT_EQ(world.trace.CommandsMatching("at!time?").size(), 1U);
    EXPECT_EQ(DateLines(world), Lines{});
}

TEST(TowerTime, ThatIsWrongIsAskedForAgainAfterFiveMinutes) {
    World world("-E362");
    world.modem.Answer("AT$NWLTIME", Line("2026.13.4.5.7.9"));
    world.Start();
    world.RunFor(32min);
    const auto asked = world.trace.CommandTimes("AT$NWLTIME");
    ASSERT_EQ(asked.size(), 7U);
    for (std::size_t i = 1; i < asked.size(); ++i) {
        EXPECT_GE(asked[i] - asked[i - 1], 5min);
        EXPECT_LE(asked[i] - asked[i - 1], 5min + 30s);
    }
    EXPECT_EQ(world.trace.CountLog("Got BAD tower time: 2026.13.4.5.7.9\r"), 7U);
    EXPECT_EQ(world.trace.CountLog(kRetry), 7U);

    // Good again: from now on every four hours.
    world.modem.Answer("AT$NWLTIME", Line("2026.3.4.5.7.9"));
    world.trace.Clear();
    world.RunFor(4h);
    EXPECT_EQ(world.trace.CommandTimes("AT$NWLTIME").size(), 1U);
    EXPECT_EQ(DateLines(world), Lines{SetLocal("5:7:9 3/4/2026")});
}

TEST(ClockJump, ByTheDaemonsOwnDateCommandDoesNotMakeItAskAgain) {
    World world("-E362");
    world.modem.Answer("AT$NWLTIME", Line("2020.3.4.5.7.9"));
    world.router.OnShell("/bin/date", [&world](const std::string&) {
        world.clock.Jump(-6 * 365 * 24h);
        return 0;
    });
    world.Start();
    world.RunFor(3h);
    EXPECT_EQ(DateLines(world), Lines{SetLocal("5:7:9 3/4/2020")});
}

}  // namespace

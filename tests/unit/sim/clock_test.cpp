#include "sim/modem/clock.h"

#include <gtest/gtest.h>

namespace {

using sim::kSecond;

TEST(Clock, RunsWithTheCallersClock) {
    sim::Clock clock;
    clock.Set(*sim::ParseIsoTime("2026-12-31T23:59:58"), 10 * kSecond);
    EXPECT_EQ(clock.Stamp(10 * kSecond), "26/12/31,23:59:58+00");
    EXPECT_EQ(clock.Stamp(12 * kSecond), "27/01/01,00:00:00+00");
}

TEST(Clock, TellsLocalTimeWithItsZoneInQuarters) {
    sim::Clock clock;
    clock.Set(*sim::ParseIsoTime("2026-03-14T01:15:02"), 0);
    clock.SetZone(-20);
    EXPECT_EQ(clock.Stamp(0), "26/03/13,20:15:02-20");
    EXPECT_EQ(clock.Utc(0).day, 14);
}

TEST(Clock, ShiftsBothWays) {
    sim::Clock clock;
    clock.Set(1000, 0);
    clock.Shift(-400);
    EXPECT_EQ(clock.UnixSeconds(5 * kSecond), 605);
}

TEST(ParseIsoTime, RefusesWhatIsNoDate) {
    EXPECT_TRUE(sim::ParseIsoTime("2028-02-29T00:00:00"));
    EXPECT_FALSE(sim::ParseIsoTime("2026-02-29T00:00:00"));
    EXPECT_FALSE(sim::ParseIsoTime("2026-03-14"));
    EXPECT_FALSE(sim::ParseIsoTime("2026-03-14T09:15:02Z"));
    EXPECT_FALSE(sim::ParseIsoTime("2026-13-01T00:00:00"));
}

}  // namespace

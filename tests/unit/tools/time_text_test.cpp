#include "modemctl/time_text.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace modemctl {
namespace {

constexpr std::time_t kNow = 1773479702;  // 2026-03-14 09:15:02 UTC

class TimeText : public ::testing::Test {
  protected:
    void SetUp() override { SetZone("UTC"); }
    void TearDown() override { SetZone("UTC"); }
    static void SetZone(const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    static std::time_t Parsed(const std::string& text) {
        std::time_t when = 0;
        return ParseTime(text, kNow, when) ? when : -1;
    }
};

TEST_F(TimeText, IsLocalAndIso) {
    EXPECT_EQ(IsoTime(kNow), "2026-03-14T09:15:02+00:00");
    SetZone("EST5");
    EXPECT_EQ(IsoTime(kNow), "2026-03-14T04:15:02-05:00");
    EXPECT_EQ(ShownTime(kNow), "2026-03-14 04:15:02");
}

TEST_F(TimeText, ShowsSpansInTheUnitThatMatters) {
    EXPECT_EQ(ShownSpan(0), "0 s");
    EXPECT_EQ(ShownSpan(119), "119 s");
    EXPECT_EQ(ShownSpan(120), "2 min");
    EXPECT_EQ(ShownSpan(3600 + 59), "1 h 00 min");
    EXPECT_EQ(ShownSpan(90000), "1 d 1 h");
    EXPECT_EQ(ShownSpan(-5), "in the future");
}

TEST_F(TimeText, ReadsTimesInTheFormsPeopleWrite) {
    EXPECT_EQ(Parsed("2026-03-14 09:15:02"), kNow);
    EXPECT_EQ(Parsed("2026-03-14T09:15:02Z"), kNow);
    EXPECT_EQ(Parsed("2026-03-14T10:15:02+01:00"), kNow);
    EXPECT_EQ(Parsed("2026-03-14T04:15:02.123456-0500"), kNow);
    EXPECT_EQ(Parsed("2026-03-14 09:15"), kNow - 2);
    EXPECT_EQ(Parsed("today"), kNow - (9 * 3600 + 15 * 60 + 2));
    EXPECT_EQ(Parsed("90"), kNow - 90);
    EXPECT_EQ(Parsed("15m"), kNow - 900);
    EXPECT_EQ(Parsed("2h"), kNow - 7200);
    EXPECT_EQ(Parsed("3d"), kNow - 3 * 86400);
}

TEST_F(TimeText, RefusesWhatIsNoTime) {
    for (const char* text :
         {"", "soon", "2026-13-01", "2026-03-00", "2026-03-14 25:00",
          "2026-03-14 09:15:02 and more", "5 apples", "-5", "99999999999999999999d"}) {
        EXPECT_EQ(Parsed(text), -1) << text;
    }
}

TEST_F(TimeText, ReadsATimeWithAZoneTheSameWayEverywhere) {
    for (const char* zone : {"UTC", "CET-1CEST,M3.5.0,M10.5.0/3", "NZST-12NZDT"}) {
        SetZone(zone);
        EXPECT_EQ(Parsed("2026-03-14T09:15:02+00:00"), kNow) << zone;
    }
}

}  // namespace
}  // namespace modemctl

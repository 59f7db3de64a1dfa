#include "state/timers.h"

#include <memory>

#include "fakes/fixture.h"
#include "support/countdown_timer.h"

namespace {

struct ExpectedTimer {
    const char* name;
    cCountdownTimer** timer;
    int seconds;
    bool runs_at_once;
};

const ExpectedTimer kExpected[] = {
    {"tower time", &g_Cp_TowerTimeTimer, 14400, false},
    {"LTE check", &g_Cp_LteCheckTimer, 30, false},
    {"ping", &g_Cp_PingTimer, 600, false},
    {"identity", &g_Cp_IdentityTimer, 30, false},
    {"no service", &g_Cp_NoServiceTimer, 30, false},
    {"SMS", &g_Cp_SmsTimer, 15, true},
    {"delay send SMS", &g_Cp_DelaySendSMSTimer, 30, false},
    {"SMS clean-up", &g_Cp_SmsCleanupTimer, 900, false},
    {"registration", &g_Cp_CregTimer, 5, true},
};

class Timers : public fake::DaemonTest {
  protected:
    Timers() {
        for (const ExpectedTimer& row : kExpected) delete *row.timer;
        CreateTimers();
    }
};

TEST_F(Timers, OnlySmsAndRegistrationRunFromTheStart) {
    for (const ExpectedTimer& row : kExpected) {
        EXPECT_EQ(row.runs_at_once, (*row.timer)->IsRunning()) << row.name;
    }
}

TEST_F(Timers, EachExpiresWithItsPeriod) {
    for (const ExpectedTimer& row : kExpected) {
        SCOPED_TRACE(row.name);
        (*row.timer)->Start();
        const std::int64_t started = world.now_us;
        world.now_us += (row.seconds - 1) * std::int64_t{1000000};
        EXPECT_TRUE((*row.timer)->IsCounting());
        world.now_us = started + row.seconds * std::int64_t{1000000};
        EXPECT_TRUE((*row.timer)->HasExpired());
    }
}

}  // namespace

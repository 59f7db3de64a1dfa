// The timers' table. Only start-up creates them; nobody frees them.

#include "state/timers.h"

#include "state/settings.h"
#include "support/countdown_timer.h"

cCountdownTimer* g_Cp_TowerTimeTimer = nullptr;
cCountdownTimer* g_Cp_LteCheckTimer = nullptr;
cCountdownTimer* g_Cp_PingTimer = nullptr;
cCountdownTimer* g_Cp_IdentityTimer = nullptr;
cCountdownTimer* g_Cp_NoServiceTimer = nullptr;
cCountdownTimer* g_Cp_SmsTimer = nullptr;
cCountdownTimer* g_Cp_DelaySendSMSTimer = nullptr;
cCountdownTimer* g_Cp_SmsCleanupTimer = nullptr;
cCountdownTimer* g_Cp_CregTimer = nullptr;

namespace {

struct TimerPeriod {
    cCountdownTimer** timer;
    unsigned seconds;
    bool starts_at_once;
};

// In the order of their creation; the main loop owns one more, for its status work.
const TimerPeriod kTimers[] = {
    {&g_Cp_TowerTimeTimer, 14400, false},
    {&g_Cp_LteCheckTimer, 30, false},
    {&g_Cp_PingTimer, 600, false},
    {&g_Cp_IdentityTimer, 30, false},
    {&g_Cp_NoServiceTimer, 30, false},
    {&g_Cp_SmsTimer, 15, true},
    {&g_Cp_DelaySendSMSTimer, 30, false},
    {&g_Cp_SmsCleanupTimer, 900, false},
    {&g_Cp_CregTimer, kCregSearchingPeriod, true},
};

}  // namespace

void CreateTimers() {
    for (const TimerPeriod& row : kTimers) {
        *row.timer = new cCountdownTimer(0, row.seconds);
        if (row.starts_at_once) (*row.timer)->Start();
    }
}

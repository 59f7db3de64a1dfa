// The countdown timers that pace the daemon's work: the handles, and the table of their periods.
//
// They count whole seconds on the wall clock and never fire by themselves; whoever does the work
// tests its timer once a pass, so a period is a lower bound. Created once at start-up, kept for the
// whole run.
#pragma once

class cCountdownTimer;

extern cCountdownTimer* g_Cp_TowerTimeTimer;     // the clock; its period is 300 s after a bad time
extern cCountdownTimer* g_Cp_LteCheckTimer;      // the data call's checks
extern cCountdownTimer* g_Cp_PingTimer;          // the link's traffic test; 30 s after a failure
extern cCountdownTimer* g_Cp_IdentityTimer;      // the identity pass
extern cCountdownTimer* g_Cp_NoServiceTimer;     // runs while the E362 has no service
extern cCountdownTimer* g_Cp_SmsTimer;           // the SMS passes
extern cCountdownTimer* g_Cp_DelaySendSMSTimer;  // runs while a failed message waits
extern cCountdownTimer* g_Cp_SmsCleanupTimer;    // the spool's housekeeping
extern cCountdownTimer* g_Cp_CregTimer;          // the registration check; 5 s or 30 s

// All of them, each with its period; the SMS and the registration timer are started at once.
void CreateTimers();

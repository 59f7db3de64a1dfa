// A data link can look up while nothing passes: a ping makes traffic now and then, and the
// interface's transmit counter shows whether it left.
#pragma once

// Pings out of wwan0 when g_Cp_PingTimer has expired, and restarts the timer. Returns 1 when it
// pinged; how the ping went is of no interest.
int RunPingCheck();

// 1 when the transmit counter of wwan0 is above that of the last good check; 0 otherwise, also
// when it cannot be read. A counter that restarts from a lower value fails until it has passed the
// old one.
int CheckTxBytes();

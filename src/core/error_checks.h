// The checks that may reset the modem, once the router has been up for long enough.
#pragma once

// Says whether a modem reset is due for an error count: the count is not 0, has changed since
// `last_seen` and is a multiple of the modulus. The reset leaves a marker file behind, which makes
// the next change of the count only remove the marker. Overwrites `last_seen` with every changed
// count.
bool ResetIsDue(int count, int modulus, int& last_seen);

// Below the uptime cutoff nothing; else the reset rule on the PPP error count, or on the LTE
// cards on the connection attempts and then the failed transmit checks. `last_seen` is shared by
// all counts.
void CheckErrorCounts(int& last_seen);

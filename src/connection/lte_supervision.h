// Keeps the data call of the Novatel LTE cards up. Both routines do nothing for other cards.
#pragma once

// Asks the modem for the QMI state, keeps what it reports in the record, and returns 1 when the
// call is connected and wwan0 has an IPv4 address, else 0. The translated result and end reason
// always describe the check before this one.
int IsNovatelConnected();

// One step of the supervision, called on every answered pass: brings the call down when the
// interface is disabled; else, every 30 s while there is service, checks the call, restarts it,
// watches the link, and resets the modem after more than 10 failed checks.
void checkLteStatus();

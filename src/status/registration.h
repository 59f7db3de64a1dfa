// Network registration: +CREG on the Sierra cards, +CEREG on the Novatel cards.
#pragma once

// Asks for the registration, <stat> of 3GPP 27.007, keeps it in the record as texts, writes
// /var/log/wirelessactivation_status and starts g_Cp_CregTimer with the period that the status
// calls for: 30 s registered, 5 s else. An answer without a status counts as 0, not searching. On
// the other cards nothing happens.
void CheckRegistration();

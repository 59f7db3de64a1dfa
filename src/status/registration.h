// Network registration: +CREG on the Sierra cards, +CEREG on the Novatel cards.
#pragma once

// Asks for the registration, keeps it in the record, writes /var/log/wirelessactivation_status and
// starts g_Cp_CregTimer with the period that the status calls for: 30 s registered, 5 s else. On
// the other cards nothing happens.
void CheckRegistration();

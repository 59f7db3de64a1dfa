// The router's clocks, set from the time that the network tells the modem.
#pragma once

// Sets the system and hardware clocks from the network's time, asked of each card in its own way.
// Nothing while SYNC_TIME is off. Sets the period of g_Cp_TowerTimeTimer for the next run: 4 hours
// after a success, 5 minutes after a bad answer worth a retry, else as it was.
void SyncTowerTime();

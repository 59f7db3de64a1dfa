// udhcpc on wwan0: started, signalled and stopped through the shell.
#pragma once

constexpr int kReleaseLease = 0;  // any mode but 1
constexpr int kTerminate = 1;

// Terminates the client in mode 1, makes it release its lease in any other mode. The interface
// stays up without an address. Takes half a second.
void StopUdhcpc(int mode);

// Starts the client, which goes to the background by itself. Nothing when the interface is
// disabled in the configuration. Takes half a second.
void StartUdhcpc();

// Back to LEASE_FAIL_COUNTER=0 in the file that the client's own scripts count in.
void ResetLeaseFailCounter();

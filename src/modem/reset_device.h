// The last resort for a modem that is stuck.
#pragma once

// Starts the router's modem reset tool in the background and returns at once. The modem's device
// goes away some time later; nobody waits for it here.
void ResetDevice();

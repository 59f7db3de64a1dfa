// The last resort for a modem that is stuck.
#pragma once

// Starts the router's modem reset tool in the background and returns at once.
void ResetDevice();

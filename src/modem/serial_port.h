// The modem's serial device: one descriptor, g_i_PortFd, raw and non-blocking.
#pragma once

// Opens g_c_PortPath and makes it raw: 8 data bits, no parity, a read returns at once. Returns 1,
// or 0 when the device cannot be opened (logged, and counted in g_i_PortOpenFailures). The results
// of the terminal requests are not tested: a device that is no terminal is used as it is.
int OpenPort();

// Before another OpenPort; also after one that failed, when there is nothing to close.
void ClosePort();

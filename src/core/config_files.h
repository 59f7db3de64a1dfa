// The two files that steer the running daemon, read again whenever their modification time (in
// whole seconds) changes.
#pragma once

#include <string>

// CM_APN, CM_ENABLE_INTERFACE and CM_DEFAULTROUTE into g_S_PppConfig. Returns 1 when the file had
// changed and was read, 0 when it is missing or unchanged; nothing changes then.
int ReadPppConfigFile();

// DEBUG_MODE and SYNC_TIME. Returns 1 when the file had changed and was read. A missing file turns
// the time sync on.
int ReadProvisioningFile();

// 1 when every character may stand in an APN: lower-case letters, digits and ".-_!". The empty
// text is not valid.
int ApnIsValidFormat(const std::string& apn);

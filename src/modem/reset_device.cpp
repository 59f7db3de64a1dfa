// The reset tool is the router's own and is never waited for.

#include "modem/reset_device.h"

#include "support/shell.h"
#include "support/system_log.h"

void ResetDevice() {
    Log("Resetting device");
    RunShell("ResetPCMCIA now &> /dev/null &");
}

// What a process inherits from whoever started it, set to known values.
#pragma once

// Before anything else. Opens what is missing of the descriptors 0 to 2 on /dev/null, so that the
// port never becomes one of them and a child's error text never reaches the modem. Gives every
// ignored signal its default and unblocks them all: with SIGCHLD ignored, the result of every shell
// line would be lost. Takes writing for others out of the umask; what is tighter stays.
void PrepareProcess();

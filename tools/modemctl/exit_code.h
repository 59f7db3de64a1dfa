// What modemctl tells the script that called it. Scripts rely on these numbers.
#pragma once

namespace modemctl {

enum ExitCode : int {
    kGood = 0,
    kNotGood = 1,  // data, fresh enough, and they say that something is wrong
    kUsage = 2,    // the command line was not understood
    kNoData = 3,   // nothing there to judge by
    kTooOld = 4,   // there is something, but the daemon no longer keeps it current
};

}  // namespace modemctl

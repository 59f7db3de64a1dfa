// The program that `sms follow --exec` runs for a message.
#pragma once

#include <string>

#include "modemctl/follow_state.h"
#include "modemctl/sms_spool.h"

namespace modemctl {

struct HandlerOrder {
    std::string command;       // for /bin/sh -c
    long long time_limit = 0;  // seconds
};

// Runs the program with the text on its standard input and what else is known in its environment:
// MODEMCTL_FROM, MODEMCTL_TIME, MODEMCTL_RECEIVED, MODEMCTL_NAME and MODEMCTL_TRY.
//
// A process of its own looks after the run and notes its end, so that modemctl may be killed
// meanwhile and the message is still not handled twice. Returns when it has ended; the end stands
// in the state then.
void RunHandler(const HandlerOrder& order, const SpoolEntry& entry, const SpoolMessage& message,
                FollowState& state);

}  // namespace modemctl

// modemctl sms: the spool for people and programs. Each action is a room of its own.
#pragma once

#include <string>

#include "modemctl/command_line.h"

namespace modemctl {

extern const Subcommand kSmsCommand;

// The actions; their arguments begin behind the action's name.
int RunSmsSend(Session& session);     // sms_send
int RunSmsList(Session& session);     // sms_list
int RunSmsFailed(Session& session);   // sms_list
int RunSmsShow(Session& session);     // sms_list
int RunSmsRequeue(Session& session);  // sms_change
int RunSmsDelete(Session& session);   // sms_change
int RunSmsFollow(Session& session);   // sms_follow

}  // namespace modemctl

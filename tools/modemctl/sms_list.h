// A message of the spool as a page and as a document.
#pragma once

#include <ctime>

#include "modemctl/command_line.h"
#include "modemctl/json.h"
#include "modemctl/sms_spool.h"

namespace modemctl {

// The members of a message, into the object at hand.
void WriteMessage(JsonWriter& json, const SpoolEntry& entry, const SpoolMessage& message,
                  std::time_t now);
void PrintMessage(const Session& session, const SpoolEntry& entry, const SpoolMessage& message);

}  // namespace modemctl

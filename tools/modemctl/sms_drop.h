// Changing the spool: a send file put in whole, one put back, one deleted. Each change is made
// within a directory that was opened before, so that nobody can exchange it on the way.
#pragma once

#include <string>

#include "modemctl/sms_spool.h"

namespace modemctl {

// Why the send directory cannot be used, empty when it can: it is missing, or reached through
// somebody else's link.
std::string SpoolTrouble();

// A name that no other file has had: its letters are plain, and it sorts behind those made before.
std::string NewSendName();

// Written beside the spool, synced and renamed in: the daemon sees nothing or all of it. Returns
// a complaint, empty when the file is there.
std::string DropSendFile(const std::string& name, const std::string& text);

// Renames a message that was given up back among those that wait; it has another day then. `name`
// is the one it has there.
std::string RequeueFailed(const SpoolEntry& entry, std::string& name);

// A directory is removed only when it is empty; of a link the link itself.
std::string DeleteEntry(const SpoolEntry& entry);

}  // namespace modemctl

// modemctl status: what a person wants to know first, on one page.
#pragma once

#include <string>

#include "modemctl/command_line.h"
#include "modemctl/snapshot.h"

namespace modemctl {

extern const Subcommand kStatusCommand;

// The page, for whoever shows it again.
std::string StatusPage(const Snapshot& snapshot, const Session& session);

}  // namespace modemctl

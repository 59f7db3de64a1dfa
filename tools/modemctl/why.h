// modemctl why: why there is no link, on one screen.
#pragma once

#include <string>

#include "modemctl/command_line.h"
#include "modemctl/diagnosis.h"

namespace modemctl {

extern const Subcommand kWhyCommand;

std::string WhyPage(const Diagnosis& diagnosis, const Session& session);

}  // namespace modemctl

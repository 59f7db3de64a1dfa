// In which tone each verdict is shown; the same on every page.
#pragma once

#include "modemctl/chain.h"
#include "modemctl/doctor_checks.h"
#include "modemctl/log_lines.h"
#include "modemctl/signal.h"
#include "modemctl/terminal.h"

namespace modemctl {

Tone ToneOf(LogLevel level);
Tone ToneOf(Hold hold);
Tone ToneOf(Strength strength);
Tone ToneOf(Health health);

}  // namespace modemctl

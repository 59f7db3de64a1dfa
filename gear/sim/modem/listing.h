// The entries of a listing of messages, in text mode and in PDU mode.
#pragma once

#include <string>

#include "sim/modem/state.h"

namespace sim {

// One line "+CMGL: ..." and the message behind it, in the form that the setting "form.listing"
// names.
std::string ListingEntry(const State& state, int index);

// The same for "+CMGR: ...", always in the usual form.
std::string ReadingEntry(const State& state, const StoredSms& message);

}  // namespace sim

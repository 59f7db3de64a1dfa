// The JSON documents' common parts, and that of modemctl status.
#pragma once

#include "modemctl/chain.h"
#include "modemctl/json.h"
#include "modemctl/snapshot.h"

namespace modemctl {

// "name":{"state":"value","text":"..."}; the state may be "absent", "unknown" and "empty".
void WriteValue(JsonWriter& json, const char* name, const Value& value);
// "statistics":{"state":"fresh","written":...,"age_seconds":...}
void WriteStatistics(JsonWriter& json, const Snapshot& snapshot, long long max_age);
// "chain":[{"part":"port","state":"holds","what":"..."},...]
void WriteChain(JsonWriter& json, const Chain& chain);
// All of modemctl status, behind the schema.
void WriteStatus(JsonWriter& json, const Snapshot& snapshot, const Chain& chain, long long max_age);

const char* VerdictWord(ExitCode verdict);

}  // namespace modemctl

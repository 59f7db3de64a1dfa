#include "modemctl/get.h"

#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/snapshot.h"
#include "modemctl/status_document.h"
#include "modemctl/time_text.h"

namespace modemctl {

namespace {

constexpr char kPrefix[] = "CELLMODEM_";

std::string WholeKey(const std::string& key) {
    return key.compare(0, sizeof(kPrefix) - 1, kPrefix) == 0 ? key : kPrefix + key;
}

int RunGet(Session& session) {
    if (session.arguments.empty()) return UsageError("get", "which KEY?");
    const std::string key = WholeKey(session.arguments[0]);
    const Snapshot snapshot = TakeSnapshot(session.tree, session.now);
    const Value value = snapshot.statistics.Get(key);
    if (session.json) {
        JsonWriter json("modemctl.get/1");
        json.Text("key", key);
        WriteValue(json, "value", value);
        WriteStatistics(json, snapshot, session.max_age);
        Print(json.Finish() + "\n");
    } else if (value.told != Told::kAbsent) {
        Print(session.terminal.Show(value.text) + "\n");
    }
    if (value.told == Told::kAbsent) return kNoData;
    if (snapshot.StatisticsFreshness(session.max_age) == Freshness::kTooOld) return kTooOld;
    return value.IsTold() ? kGood : kNotGood;
}

}  // namespace

const Subcommand kGetCommand = {
    "get",
    "KEY",
    "one value of the statistics",
    "Prints the value of one key of /var/log/wireless.cardstats, with or without the prefix\n"
    "CELLMODEM_. Exit status 1: the modem has not told it; 3: there is no such key; 4: it is old.",
    {},
    {{"modemctl get CARRIER", "the name of the network"}},
    1,
    RunGet,
};

}  // namespace modemctl

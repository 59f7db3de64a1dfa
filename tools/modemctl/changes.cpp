#include "modemctl/changes.h"

#include <cstdlib>

#include "modemctl/log_lines.h"
#include "modemctl/signal.h"
#include "modemctl/status_document.h"
#include "modemctl/time_text.h"
#include "modemctl/tones.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

std::string TextOf(const Value& value) {
    return value.IsTold() ? value.text : "";
}

std::string PartOf(const Chain& chain, ChainPart part) {
    const ChainLink& link = chain[part];
    return link.hold == Hold::kHolds || link.hold == Hold::kBroken ? link.what : "";
}

const char* DaemonText(DaemonState state) {
    switch (state) {
        case DaemonState::kNeverStarted:
            return "not started";
        case DaemonState::kRunning:
            return "running";
        case DaemonState::kDead:
            return "gone";
        case DaemonState::kUnknown:
            break;
    }
    return "";
}

struct Watched {
    const char* name;
    std::string (*read)(const Snapshot& snapshot, const Chain& chain);
};

// In the order in which the changes of one look are told.
constexpr Watched kWatched[] = {
    {"verdict",
     [](const Snapshot&, const Chain& chain) -> std::string { return VerdictWord(chain.verdict); }},
    {"daemon",
     [](const Snapshot& snapshot, const Chain&) -> std::string {
         return DaemonText(snapshot.daemon);
     }},
    {"model", [](const Snapshot& snapshot,
                 const Chain&) { return TextOf(snapshot.statistics.Get(key::kModel)); }},
    {"sim", [](const Snapshot&, const Chain& chain) { return PartOf(chain, ChainPart::kSim); }},
    {"carrier", [](const Snapshot& snapshot,
                   const Chain&) { return TextOf(snapshot.statistics.Get(key::kCarrier)); }},
    {"registration",
     [](const Snapshot&, const Chain& chain) { return PartOf(chain, ChainPart::kRegistration); }},
    {"technology", [](const Snapshot& snapshot,
                      const Chain&) { return TextOf(snapshot.statistics.Get(key::kServiceType)); }},
    {"call", [](const Snapshot&, const Chain& chain) { return PartOf(chain, ChainPart::kCall); }},
    {"address", [](const Snapshot& snapshot, const Chain&) { return snapshot.address; }},
    {"to_send",
     [](const Snapshot& snapshot, const Chain&) { return Format("%lld", snapshot.sending.files); }},
    {"received", [](const Snapshot& snapshot,
                    const Chain&) { return Format("%lld", snapshot.received.files); }},
    {"failed",
     [](const Snapshot& snapshot, const Chain&) { return Format("%lld", snapshot.failed.files); }},
};

Tone ToneOfChange(const std::string& name, const std::string& to) {
    if (name != "verdict") return Tone::kPlain;
    return to == "good" ? Tone::kGood : Tone::kBad;
}

}  // namespace

std::string Change::Words() const {
    if (name == "log") return to;
    if (name == "start") return "watching: " + to;
    return name + ": " + (from.empty() ? "-" : from) + " -> " + (to.empty() ? "-" : to);
}

std::string ChangeFinder::SignalState(const Snapshot& snapshot) const {
    const Signal signal = ReadSignal(snapshot.statistics);
    const auto old = state_.find("signal_dbm");
    const std::string before = old != state_.end() ? old->second : "";
    if (!signal.rssi) return "";
    const bool near = !before.empty() && std::llabs(*signal.rssi - ToInt(before)) < signal_step_;
    return near ? before : Format("%lld", *signal.rssi);
}

std::vector<Change> ChangeFinder::Look(const Snapshot& snapshot, const Chain& chain) {
    std::vector<Change> changes;
    const auto see = [&](const char* name, const std::string& now) {
        std::string& before = state_[name];
        if (now == before) return;
        if (looked_) changes.push_back({snapshot.now, name, before, now, ToneOfChange(name, now)});
        before = now;
    };
    for (const Watched& watched : kWatched) see(watched.name, watched.read(snapshot, chain));
    see("signal_dbm", SignalState(snapshot));
    if (!looked_) {
        const std::string& verdict = state_["verdict"];
        changes.push_back({snapshot.now, "start", "", verdict, ToneOfChange("verdict", verdict)});
    }
    looked_ = true;
    return changes;
}

Change ChangeOf(const LogRecord& record) {
    const LogMatch match = MatchLogLine(record.text);
    Change change;
    change.when = record.when;
    change.name = "log";
    change.to = record.text;
    if (match.line != nullptr) {
        change.to = std::string(TopicWord(match.line->topic)) + ": " + match.Plain();
        change.from = record.text;
        change.tone = ToneOf(match.line->level);
    }
    return change;
}

std::string ChangeDocument(const Change& change, const std::map<std::string, std::string>& state) {
    JsonWriter json("modemctl.watch/1");
    json.Text("time", IsoTime(change.when));
    json.Text("event", change.name);
    if (change.name == "log") {
        json.Text("line", change.from.empty() ? change.to : change.from);
        json.Text("text", change.to);
    } else {
        json.Text("from", change.from);
        json.Text("to", change.to);
    }
    json.BeginObject("state");
    for (const auto& [name, value] : state) json.Text(name.c_str(), value);
    json.End();
    return json.Finish();
}

}  // namespace modemctl

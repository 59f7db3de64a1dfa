#include "modemctl/status_document.h"

#include "modemctl/signal.h"
#include "modemctl/time_text.h"
#include "state/published.h"

namespace modemctl {

namespace {

namespace key = published::key;

const char* HoldId(Hold hold) {
    return hold == Hold::kNotWatched ? "not_watched" : HoldWord(hold);
}

const char* DaemonWord(DaemonState state) {
    switch (state) {
        case DaemonState::kNeverStarted:
            return "never_started";
        case DaemonState::kRunning:
            return "running";
        case DaemonState::kDead:
            return "dead";
        case DaemonState::kUnknown:
            return "unknown";
    }
    return "unknown";
}

struct JsonText {
    const char* name;
    const char* key;
};

constexpr JsonText kModemTexts[] = {
    {"manufacturer", key::kManufacturer},
    {"model", key::kModel},
    {"firmware", key::kFirmwareVersion},
    {"imei", key::kImei},
    {"sim_id", key::kSimId},
    {"number", key::kMdn},
    {"temperature_celsius", key::kTemperature},
};
constexpr JsonText kNetworkTexts[] = {
    {"carrier", key::kCarrier}, {"plmn", key::kCarrierPlmn},  {"technology", key::kServiceType},
    {"band", key::kBand},       {"registration", key::kCreg},
};
constexpr JsonText kCallTexts[] = {
    {"state", key::kQmiState},
    {"time", key::kQmiCallTime},
    {"last_end", key::kQmiEndReason},
    {"last_result", key::kQmiResultNumber},
};

template <std::size_t N>
void WriteTexts(JsonWriter& json, const char* name, const JsonText (&texts)[N],
                const Statistics& statistics) {
    json.BeginObject(name);
    for (const JsonText& row : texts) WriteValue(json, row.name, statistics.Get(row.key));
    json.End();
}

void WriteDecimal(JsonWriter& json, const char* name, const std::optional<double>& value) {
    if (value) {
        json.Decimal(name, *value);
    } else {
        json.Null(name);
    }
}

void WriteSignal(JsonWriter& json, const Signal& signal) {
    json.BeginObject("signal");
    json.Text("strength", StrengthWord(signal.strength));
    json.Number("percent", signal.permille / 10);
    json.Number("rssi_dbm", signal.rssi);
    json.Number("csq", signal.csq);
    WriteDecimal(json, "rsrp_dbm", signal.rsrp);
    WriteDecimal(json, "rsrq_db", signal.rsrq);
    WriteDecimal(json, "ecio_db", signal.ecio);
    json.End();
}

void WriteSpool(JsonWriter& json, const char* name, const Spool& spool, std::time_t now) {
    json.BeginObject(name);
    json.Number("files", spool.files);
    json.Number("oldest_age_seconds",
                spool.files > 0 ? std::optional<long long>(now - spool.oldest) : std::nullopt);
    json.End();
}

void WriteLink(JsonWriter& json, const Snapshot& snapshot) {
    json.BeginObject("link");
    json.Bool("enabled", snapshot.ppp.interface_enabled);
    if (snapshot.address.empty()) {
        json.Null("address");
    } else {
        json.Text("address", snapshot.address);
    }
    json.Number("sent_bytes", snapshot.sent_bytes);
    json.Number("received_bytes", snapshot.received_bytes);
    json.End();
}

}  // namespace

const char* VerdictWord(ExitCode verdict) {
    switch (verdict) {
        case kGood:
            return "good";
        case kNotGood:
            return "not_good";
        case kTooOld:
            return "too_old";
        case kNoData:
        case kUsage:
            return "no_data";
    }
    return "no_data";
}

void WriteValue(JsonWriter& json, const char* name, const Value& value) {
    constexpr const char* kStates[] = {"absent", "unknown", "empty", "value"};
    json.BeginObject(name);
    json.Text("state", kStates[static_cast<int>(value.told)]);
    if (value.IsTold()) json.Text("text", value.text);
    json.End();
}

void WriteStatistics(JsonWriter& json, const Snapshot& snapshot, long long max_age) {
    constexpr const char* kStates[] = {"absent", "fresh", "too_old"};
    const Freshness freshness = snapshot.StatisticsFreshness(max_age);
    json.BeginObject("statistics");
    json.Text("state", kStates[static_cast<int>(freshness)]);
    if (freshness != Freshness::kAbsent) {
        json.Text("written", IsoTime(snapshot.statistics.written));
        json.Number("age_seconds", snapshot.Age());
    }
    json.End();
}

void WriteChain(JsonWriter& json, const Chain& chain) {
    json.BeginArray("chain");
    for (std::size_t i = 0; i < kChainParts; ++i) {
        json.BeginElement();
        json.Text("part", PartName(static_cast<ChainPart>(i)));
        json.Text("state", HoldId(chain.links[i].hold));
        json.Text("what", chain.links[i].what);
        json.End();
    }
    json.End();
}

void WriteStatus(JsonWriter& json, const Snapshot& snapshot, const Chain& chain,
                 long long max_age) {
    json.Text("time", IsoTime(snapshot.now));
    json.Text("verdict", VerdictWord(chain.verdict));
    json.BeginObject("daemon");
    json.Text("state", DaemonWord(snapshot.daemon));
    if (snapshot.pid > 0) json.Number("pid", snapshot.pid);
    json.End();
    WriteStatistics(json, snapshot, max_age);
    WriteTexts(json, "modem", kModemTexts, snapshot.statistics);
    WriteTexts(json, "network", kNetworkTexts, snapshot.statistics);
    WriteSignal(json, ReadSignal(snapshot.statistics));
    WriteTexts(json, "call", kCallTexts, snapshot.statistics);
    WriteLink(json, snapshot);
    json.BeginObject("messages");
    WriteSpool(json, "to_send", snapshot.sending, snapshot.now);
    WriteSpool(json, "received", snapshot.received, snapshot.now);
    WriteSpool(json, "failed", snapshot.failed, snapshot.now);
    json.End();
    WriteChain(json, chain);
}

}  // namespace modemctl

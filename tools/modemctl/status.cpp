#include "modemctl/status.h"

#include "modemctl/chain.h"
#include "modemctl/exit_code.h"
#include "modemctl/page.h"
#include "modemctl/signal.h"
#include "modemctl/status_document.h"
#include "modemctl/time_text.h"
#include "modemctl/tones.h"
#include "modemctl/unicode.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

constexpr int kBarCells = 20;

// Bytes as people read them: "726 B", "1.2 MB".
std::string ShownBytes(long long bytes) {
    constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
    if (bytes < 1000) return Format("%lld B", bytes);
    auto shown = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (shown >= 999.95) {
        shown /= 1000;
        ++unit;
    }
    return Format("%.1f %s", shown, kUnits[unit]);
}

void AddReading(std::string& text, const std::string& reading) {
    text += (text.empty() ? "" : ", ") + reading;
}

std::string Readings(const Signal& signal) {
    std::string text;
    if (signal.rssi) AddReading(text, Format("%lld dBm", *signal.rssi));
    if (signal.csq) AddReading(text, Format("CSQ %lld", *signal.csq));
    if (signal.rsrp) AddReading(text, Format("RSRP %g dBm", *signal.rsrp));
    if (signal.rsrq) AddReading(text, Format("RSRQ %g dB", *signal.rsrq));
    if (signal.ecio) AddReading(text, Format("Ec/Io %g dB", *signal.ecio));
    return text;
}

// The rows of one page, in the order in which they are asked.
class StatusRows {
  public:
    StatusRows(const Snapshot& snapshot, const Session& session)
        : snapshot_(snapshot),
          terminal_(session.terminal),
          chain_(JudgeChain(snapshot, session.max_age)),
          page_(session.terminal) {}

    std::string Text() {
        AddVerdict();
        page_.Line("");
        if (snapshot_.statistics.presence == Presence::kWhole) {
            AddModem();
            AddNetwork();
            AddSignal();
            AddRegistration();
            if (snapshot_.card == Card::kLte) AddLink();
            Add("Temperature", key::kTemperature, " C");
        }
        AddClock();
        AddMessages();
        AddDaemon();
        return page_.Text();
    }

  private:
    std::string StatisticsAge() const { return ShownSpan(snapshot_.Age()); }
    bool IsOld() const { return chain_.verdict == kTooOld; }
    // What is too old is shown, yet nobody shall take it for news.
    Tone Aged(Tone tone) const { return IsOld() ? Tone::kDim : tone; }
    Value Get(const char* name) const { return snapshot_.statistics.Get(name); }
    Tone ValueTone(const Value& value) const {
        return value.IsTold() ? Aged(Tone::kPlain) : Tone::kDim;
    }

    const char* GoodWords() const {
        if (snapshot_.card == Card::kLte) return "Good: the link is up";
        const bool registered = chain_[ChainPart::kRegistration].hold == Hold::kHolds;
        return registered ? "Good: the modem is registered" : "Good: the modem answers";
    }

    void AddVerdict() {
        switch (chain_.verdict) {
            case kNoData:
                return page_.Line("No data: " + chain_[ChainPart::kPort].what, Tone::kBad);
            case kTooOld:
                return page_.Line("Too old: nothing new since " +
                                      ShownTime(snapshot_.statistics.written) + ", " +
                                      chain_[ChainPart::kPort].what,
                                  Tone::kBad);
            case kGood:
                return page_.Line(GoodWords(), Tone::kGood);
            default:
                break;
        }
        const bool broken = chain_.First(Hold::kBroken) < kChainParts;
        const auto part =
            static_cast<ChainPart>(chain_.First(broken ? Hold::kBroken : Hold::kUnknown));
        page_.Line((broken ? "Not good: " : "Not known to be good: ") +
                       std::string(PartName(part)) + ": " + terminal_.Show(chain_[part].what) +
                       " (modemctl why)",
                   broken ? Tone::kBad : Tone::kFair);
    }

    void Add(const char* label, const char* name, const char* unit = "") {
        const Value value = Get(name);
        if (value.told == Told::kAbsent) return;
        page_.Row(label, page_.Words(value) + (value.IsTold() ? unit : ""), ValueTone(value),
                  StatisticsAge());
    }

    void AddModem() {
        const Value maker = Get(key::kManufacturer);
        const Value model = Get(key::kModel);
        std::string text = page_.Words(model);
        if (maker.IsTold()) text = page_.Words(maker) + " " + (model.IsTold() ? text : "");
        page_.Row("Modem", text, ValueTone(model.IsTold() ? model : maker), StatisticsAge());
        Add("Firmware", key::kFirmwareVersion);
        Add("IMEI", key::kImei);
        Add("Number", key::kMdn);
        const Value id = Get(key::kSimId);
        const ChainLink& sim = chain_[ChainPart::kSim];
        const std::string shown = id.IsTold() ? page_.Words(id) + ", " : "";
        page_.Row("SIM", shown + terminal_.Show(sim.what),
                  Aged(sim.hold == Hold::kHolds ? Tone::kPlain : ToneOf(sim.hold)),
                  StatisticsAge());
    }

    void AddNetwork() {
        Add("Carrier", key::kCarrier);
        Value technology = Get(key::kServiceType);
        if (!technology.IsTold() && Get(key::kSystemMode).IsTold()) {
            technology = Get(key::kSystemMode);
        }
        if (technology.told == Told::kAbsent) return;
        const Value band = Get(key::kBand);
        std::string text = page_.Words(technology);
        if (band.IsTold()) text += ", " + page_.Words(band);
        page_.Row("Technology", text, ValueTone(technology), StatisticsAge());
    }

    void AddSignal() {
        const Signal signal = ReadSignal(snapshot_.statistics);
        const int filled = (signal.permille * kBarCells + 500) / 1000;
        const char* const word =
            signal.strength == Strength::kUnknown ? "no reading" : StrengthWord(signal.strength);
        page_.PaintedRow("Signal",
                         terminal_.Paint(Aged(ToneOf(signal.strength)),
                                         terminal_.Bar(filled, kBarCells) + "  " + word),
                         kBarCells + 2 + Columns(word), StatisticsAge());
        const std::string readings = Readings(signal);
        if (!readings.empty()) page_.Row("", readings, Aged(Tone::kPlain));
    }

    void AddRegistration() {
        const ChainLink& link = chain_[ChainPart::kRegistration];
        const bool own_file = snapshot_.registration.presence != Presence::kAbsent;
        const long long age = snapshot_.now - snapshot_.registration.written;
        page_.Row("Registration", terminal_.Show(link.what), Aged(ToneOf(link.hold)),
                  own_file ? ShownSpan(age) : StatisticsAge());
    }

    void AddLink() {
        const ChainLink& call = chain_[ChainPart::kCall];
        std::string text = terminal_.Show(call.what);
        const Value time = Get(key::kQmiCallTime);
        if (call.hold == Hold::kHolds && time.IsTold()) text += " for " + page_.Words(time);
        page_.Row("Call", text, Aged(ToneOf(call.hold)), StatisticsAge());
        const ChainLink& address = chain_[ChainPart::kAddress];
        page_.Row("Address", terminal_.Show(address.what), ToneOf(address.hold),
                  snapshot_.address_known ? "now" : "");
        if (!snapshot_.sent_bytes || !snapshot_.received_bytes) return;
        page_.Row("Traffic",
                  "sent " + ShownBytes(*snapshot_.sent_bytes) + ", received " +
                      ShownBytes(*snapshot_.received_bytes),
                  Tone::kPlain, "now");
    }

    // The other cards are never asked for the time.
    const char* ClockSource() const {
        if (snapshot_.card == Card::kOther) return ", not set by this modem";
        return snapshot_.provisioning.sync_time ? ", set by the network"
                                                : ", not set by the network";
    }

    void AddClock() {
        page_.Row("Clock", ShownTime(snapshot_.now) + ClockSource(), Tone::kPlain, "now");
    }

    void AddMessages() {
        const Spool& sending = snapshot_.sending;
        if (!sending.exists && !snapshot_.received.exists && !snapshot_.failed.exists) {
            return page_.Row("Messages", "no spool", Tone::kDim);
        }
        std::string text = Format("%lld to send", sending.files);
        if (sending.files > 0) {
            text += " (oldest " + ShownSpan(snapshot_.now - sending.oldest) + ")";
        }
        text += Format(", %lld received, %lld failed", snapshot_.received.files,
                       snapshot_.failed.files);
        page_.Row("Messages", text, snapshot_.failed.files > 0 ? Tone::kFair : Tone::kPlain, "now");
    }

    void AddDaemon() {
        switch (snapshot_.daemon) {
            case DaemonState::kNeverStarted:
                return page_.Row("Daemon", "not started since the router was", Tone::kBad, "now");
            case DaemonState::kDead:
                return page_.Row("Daemon", Format("process %d is gone", snapshot_.pid), Tone::kBad,
                                 "now");
            case DaemonState::kRunning:
                return page_.Row("Daemon", Format("running, process %d", snapshot_.pid),
                                 Tone::kPlain, "now");
            case DaemonState::kUnknown:
                return page_.Row("Daemon", "not in these files", Tone::kDim);
        }
    }

    const Snapshot& snapshot_;
    const Terminal& terminal_;
    const Chain chain_;
    Page page_;
};

int RunStatus(Session& session) {
    const Snapshot snapshot = TakeSnapshot(session.tree, session.now);
    const Chain chain = JudgeChain(snapshot, session.max_age);
    if (session.json) {
        JsonWriter json("modemctl.status/1");
        WriteStatus(json, snapshot, chain, session.max_age);
        Print(json.Finish() + "\n");
    } else {
        Print(StatusPage(snapshot, session));
    }
    return chain.verdict;
}

}  // namespace

std::string StatusPage(const Snapshot& snapshot, const Session& session) {
    return StatusRows(snapshot, session).Text();
}

const Subcommand kStatusCommand = {
    "status",
    "",
    "the modem, the network and the link on one page",
    "The modem, its network, the signal, the data call, the clock and the messages, and at the\n"
    "right how old each is. \"not told yet\" is what the modem has not said so far, \"told "
    "nothing\"\n"
    "an empty answer; what the daemon does not publish for this card is left out.",
    {},
    {{"modemctl status", "the page"},
     {"modemctl status --json", "the same for a program"},
     {"modemctl status --root /tmp/copy --now 2026-03-14T09:20", "of files copied elsewhere"}},
    0,
    RunStatus,
};

}  // namespace modemctl

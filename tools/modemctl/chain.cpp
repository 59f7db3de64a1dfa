#include "modemctl/chain.h"

#include <algorithm>

#include "modemctl/time_text.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

ChainLink Holds(const std::string& what) {
    return {Hold::kHolds, what};
}

ChainLink Broken(const std::string& what) {
    return {Hold::kBroken, what};
}

ChainLink Unknown(const std::string& what) {
    return {Hold::kUnknown, what};
}

ChainLink NotAsked() {
    return {Hold::kNotWatched, "not asked of this card"};
}

bool BeginsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

const char* WhyNoStatistics(Presence presence) {
    switch (presence) {
        case Presence::kUnreadable:
            return "what the daemon publishes is not to be read";
        case Presence::kUnsettled:
            return "what the daemon publishes is never whole";
        case Presence::kEmpty:
            return "what the daemon publishes is empty: a full file system?";
        case Presence::kAbsent:
        case Presence::kWhole:
            break;
    }
    return "the daemon has published nothing yet";
}

ChainLink JudgePort(const Snapshot& snapshot, long long max_age) {
    switch (snapshot.daemon) {
        case DaemonState::kNeverStarted:
            return Broken("the daemon has not been started");
        case DaemonState::kDead:
            return Broken("the daemon is not running");
        case DaemonState::kRunning:
        case DaemonState::kUnknown:
            break;
    }
    switch (snapshot.StatisticsFreshness(max_age)) {
        case Freshness::kAbsent:
            return Unknown(WhyNoStatistics(snapshot.statistics.presence));
        case Freshness::kTooOld:
            return Broken("the modem has not answered for " + ShownSpan(snapshot.Age()));
        case Freshness::kFresh:
            break;
    }
    return Holds("the modem answers");
}

struct ShortForm {
    const char* abbreviated;
    const char* full;
};

constexpr ShortForm kRegistrations[] = {
    {"Not Reg", "Not Registered, Not Searching"},
    {"Reg Home", "Registered, Home Network"},
    {"Searching", "Not registered, Searching"},
    {"Reg Denied", "Registration Denied"},
    {"Unkn Stat", "Status Unknown"},
    {"Reg Roam", "Registered, Roaming"},
};

// As published with the statistics, or by the file of its own on cards that have only that.
Value Registration(const Snapshot& snapshot) {
    const Value in_words = snapshot.statistics.Get(key::kCreg);
    if (in_words.IsTold()) return in_words;
    Value registration = snapshot.registration.value;
    if (!registration.IsTold() && in_words.told != Told::kAbsent) return in_words;
    for (const ShortForm& form : kRegistrations) {
        if (registration.text == form.abbreviated) registration.text = form.full;
    }
    return registration;
}

bool IsRegistered(const Value& registration) {
    return BeginsWith(registration.text, "Registered");
}

ChainLink JudgeSim(const Snapshot& snapshot) {
    const Value status = snapshot.statistics.Get(key::kSimStatus);
    const Value id = snapshot.statistics.Get(key::kSimId);
    if (status.text == "Available") return Holds("available");
    if (BeginsWith(status.text, "Not ")) return Broken(status.text);
    if (id.IsTold()) return Holds("known to the modem");
    if (IsRegistered(Registration(snapshot))) return Holds("registered with it");
    // Asked for only when the modem has said that the SIM is ready, and told with the next answer.
    if (snapshot.card == Card::kLte && Registration(snapshot).IsTold()) {
        return Broken("the modem has not said that it is ready");
    }
    return Unknown("the modem has not told");
}

ChainLink JudgeRegistration(const Snapshot& snapshot) {
    const Value registration = Registration(snapshot);
    if (IsRegistered(registration)) return Holds(registration.text);
    if (registration.IsTold() && BeginsWith(registration.text, "Status")) {
        return Unknown(registration.text);
    }
    if (registration.IsTold()) return Broken(registration.text);
    if (registration.told == Told::kAbsent) return NotAsked();
    return Unknown("the modem has not told");
}

ChainLink JudgeService(const Snapshot& snapshot) {
    const Value service = snapshot.statistics.Get(key::kServiceType);
    if (service.told == Told::kAbsent) return NotAsked();
    if (!service.IsTold()) return Unknown("the modem has not told");
    const bool bad = Contains(service.text, "No ") || service.text == "Searching";
    return bad ? Broken(service.text) : Holds(service.text);
}

ChainLink JudgeCall(const Snapshot& snapshot) {
    const Value state = snapshot.statistics.Get(key::kQmiState);
    if (!snapshot.ppp.interface_enabled) return Broken("switched off in the configuration");
    if (BeginsWith(state.text, "CONNECTED")) return Holds(state.text);
    if (state.IsTold() && state.text != "unknown") return Broken(state.text);
    return Unknown(state.IsTold() ? "the modem does not know" : "the modem has not told");
}

ChainLink JudgeAddress(const Snapshot& snapshot) {
    if (!snapshot.address_known) return Unknown("not in these files");
    if (!snapshot.address.empty()) return Holds(snapshot.address);
    return Broken(std::string(published::kWwanInterface) +
                  (snapshot.interface_exists ? " has no address" : " does not exist"));
}

ChainLink JudgeTraffic(const Snapshot& snapshot) {
    if (!snapshot.sent_bytes) return Unknown("no counters");
    if (*snapshot.sent_bytes > 0) return Holds("bytes have left");
    return Unknown("nothing has left yet");
}

void JudgeLink(const Snapshot& snapshot, Chain& chain) {
    if (snapshot.card == Card::kLte) {
        chain[ChainPart::kCall] = JudgeCall(snapshot);
        chain[ChainPart::kAddress] = JudgeAddress(snapshot);
        chain[ChainPart::kTraffic] = JudgeTraffic(snapshot);
        return;
    }
    if (snapshot.card == Card::kUnknown) return;
    for (const ChainPart part : {ChainPart::kCall, ChainPart::kAddress, ChainPart::kTraffic}) {
        chain[part] = {Hold::kNotWatched, "not the daemon's affair with this card"};
    }
}

bool HoldsOrIsNotWatched(const ChainLink& link) {
    return link.hold == Hold::kHolds || link.hold == Hold::kNotWatched;
}

// That nothing is known to be broken is not enough. On LTE either of call and address will do: the
// address comes from the kernel, and the modem is asked for its call only every 30 seconds.
bool IsProven(const Snapshot& snapshot, const Chain& chain) {
    if (!HoldsOrIsNotWatched(chain[ChainPart::kRegistration])) return false;
    return snapshot.card != Card::kLte || chain[ChainPart::kCall].hold == Hold::kHolds ||
           chain[ChainPart::kAddress].hold == Hold::kHolds;
}

ExitCode Verdict(const Snapshot& snapshot, const Chain& chain, long long max_age) {
    switch (snapshot.StatisticsFreshness(max_age)) {
        case Freshness::kAbsent:
            return kNoData;
        case Freshness::kTooOld:
            return kTooOld;
        case Freshness::kFresh:
            break;
    }
    return chain.First(Hold::kBroken) == kChainParts && IsProven(snapshot, chain) ? kGood
                                                                                  : kNotGood;
}

}  // namespace

std::size_t Chain::First(Hold hold) const {
    const auto found = std::find_if(links.begin(), links.end(),
                                    [=](const ChainLink& link) { return link.hold == hold; });
    return static_cast<std::size_t>(found - links.begin());
}

const char* PartName(ChainPart part) {
    constexpr const char* kNames[] = {"port", "SIM",     "registration", "service",
                                      "call", "address", "traffic"};
    return kNames[static_cast<std::size_t>(part)];
}

const char* HoldWord(Hold hold) {
    switch (hold) {
        case Hold::kHolds:
            return "holds";
        case Hold::kBroken:
            return "broken";
        case Hold::kUnknown:
            return "unknown";
        case Hold::kNotWatched:
            return "not watched";
    }
    return "unknown";
}

Chain JudgeChain(const Snapshot& snapshot, long long max_age) {
    Chain chain;
    chain[ChainPart::kPort] = JudgePort(snapshot, max_age);
    if (snapshot.card != Card::kUnknown) {
        chain[ChainPart::kSim] = JudgeSim(snapshot);
        chain[ChainPart::kRegistration] = JudgeRegistration(snapshot);
        chain[ChainPart::kService] = JudgeService(snapshot);
    }
    JudgeLink(snapshot, chain);
    chain.verdict = Verdict(snapshot, chain, max_age);
    return chain;
}

}  // namespace modemctl

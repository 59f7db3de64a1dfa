#include "modemctl/diagnosis.h"

#include <algorithm>

namespace modemctl {

namespace {

constexpr char kNothingLeaves[] = "Warning: TX count on %s not incrementing.";
constexpr char kNoLease[] = "Interface %s is connected, but does not have a valid IP.";
constexpr char kExit[] = "exit";
constexpr char kGaveUpPort[] = "Failed to open port %d times, exiting";
constexpr char kLostPort[] = "Port error counter above %d, resetting modem";
constexpr char kNoPort[] = "Unable to open port %s, attempt %d/%d";

constexpr long long kLinkCheckSeconds = 100;  // failed checks are 30 to 45 s apart
constexpr long long kPortRetrySeconds = 30;   // a port that does not open is tried every 10 s
constexpr long long kHour = 3600;

// A tree that was copied without /proc cannot tell whether the daemon runs; its log can.
bool LogSaysEnded(const LogFacts& log) {
    return log.EndsWith(kExit) || log.Has(kGaveUpPort) || log.Has(kLostPort);
}

// What only the log knows: whether bytes leave, whether the port opens.
void AddLog(const Snapshot& snapshot, const LogFacts& log, Chain& chain) {
    const std::time_t now = snapshot.now;
    ChainLink& port = chain[ChainPart::kPort];
    if (snapshot.daemon == DaemonState::kUnknown && LogSaysEnded(log)) {
        port = {Hold::kBroken, "the daemon has ended"};
    }
    if (snapshot.daemon != DaemonState::kDead && log.EndsWith(kNoPort) &&
        log.IsRecent(kNoPort, now, kPortRetrySeconds)) {
        port = {Hold::kBroken, "the port does not open"};
    }
    if (snapshot.card != Card::kLte) return;
    ChainLink& address = chain[ChainPart::kAddress];
    if (address.hold == Hold::kUnknown && log.IsRecent(kNoLease, now, kLinkCheckSeconds)) {
        address = {Hold::kBroken, "no lease, says the log"};
    }
    ChainLink& traffic = chain[ChainPart::kTraffic];
    if (log.IsRecent(kNothingLeaves, now, kLinkCheckSeconds)) {
        traffic = {Hold::kBroken, "nothing leaves"};
    }
}

Proof ProofOf(const LogFact& fact) {
    Proof proof;
    proof.text = fact.Newest().text;
    proof.last = fact.Newest().when;
    proof.times = fact.Streak(kHour);
    proof.first = fact.records[fact.records.size() - static_cast<std::size_t>(proof.times)].when;
    return proof;
}

std::vector<Proof> Proofs(const Cause& cause, const LogFacts& log) {
    std::vector<Proof> proofs;
    for (const char* const format : cause.evidence) {
        const LogFact* const fact = log.Find(format);
        if (fact != nullptr) proofs.push_back(ProofOf(*fact));
    }
    std::stable_sort(proofs.begin(), proofs.end(),
                     [](const Proof& a, const Proof& b) { return a.last < b.last; });
    return proofs;
}

const Cause* FindCause(const Case& the_case, ChainPart part) {
    const auto& causes = AllCauses();
    const auto found = std::find_if(causes.begin(), causes.end(), [&](const Cause& cause) {
        return cause.part == part && cause.applies(the_case);
    });
    return found != causes.end() ? &*found : nullptr;
}

// Where to look for the cause: the first link that is broken, else the first that nobody knows of.
// An address that is missing says little while nobody knows of the call it would belong to.
std::size_t WeakestLink(const Chain& chain) {
    constexpr auto kAddress = static_cast<std::size_t>(ChainPart::kAddress);
    const std::size_t broken = chain.First(Hold::kBroken);
    if (broken == kAddress && chain[ChainPart::kCall].hold == Hold::kUnknown) return kAddress - 1;
    if (broken < kChainParts) return broken;
    return chain.verdict == kGood ? kChainParts : chain.First(Hold::kUnknown);
}

}  // namespace

Diagnosis Diagnose(const Snapshot& snapshot, const std::vector<LogRecord>& records,
                   long long max_age) {
    const LogFacts log(records);
    Diagnosis diagnosis;
    diagnosis.snapshot = snapshot;
    diagnosis.chain = JudgeChain(snapshot, max_age);
    AddLog(snapshot, log, diagnosis.chain);
    if (diagnosis.chain.verdict == kGood && diagnosis.chain.First(Hold::kBroken) < kChainParts) {
        diagnosis.chain.verdict = kNotGood;
    }
    for (const LogRecord& copy : log.SecondCopies()) {
        if (snapshot.now - copy.when <= kHour) ++diagnosis.second_copies;
    }
    const std::size_t weakest = WeakestLink(diagnosis.chain);
    if (weakest == kChainParts) return diagnosis;
    const Case the_case = {snapshot, diagnosis.chain, log, snapshot.now, max_age};
    diagnosis.cause = FindCause(the_case, static_cast<ChainPart>(weakest));
    if (diagnosis.cause == nullptr) return diagnosis;
    diagnosis.proofs = Proofs(*diagnosis.cause, log);
    diagnosis.next = diagnosis.cause->next(the_case);
    return diagnosis;
}

}  // namespace modemctl

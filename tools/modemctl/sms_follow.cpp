// modemctl sms follow: each new message once, as a page, as a document or to a program.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <map>
#include <set>

#include "modemctl/exit_code.h"
#include "modemctl/follow_state.h"
#include "modemctl/handler.h"
#include "modemctl/sms.h"
#include "modemctl/sms_drop.h"
#include "modemctl/sms_list.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr useconds_t kLookPause = 400000;  // microseconds; the daemon writes every 15 s at most
constexpr char kUsualTimeLimit[] = "60";   // seconds
constexpr char kUsualPause[] = "30";       // seconds
constexpr char kUsualTries[] = "3";
// A file that stays unfinished so long was cut off by a full file system.
constexpr long long kUnfinishedPatience = 5;  // seconds

volatile std::sig_atomic_t g_must_end = 0;

void EndSoon(int) {
    g_must_end = 1;
}

void CatchEndSignals() {
    struct sigaction action = {};
    action.sa_handler = EndSoon;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// Whole messages in the order they came; half-written ones wait for the next look.
std::vector<SpoolEntry> ReceivedEntries(const Tree& tree) {
    std::vector<SpoolEntry> entries;
    ListSpool(tree, SpoolPlace::kReceived, entries);
    return entries;
}

bool IsStillWritten(const SpoolEntry& entry, const SpoolMessage& message) {
    return message.readable == Readable::kUnfinished &&
           std::time(nullptr) - entry.modified < kUnfinishedPatience;
}

// Shows what comes from now on.
int FollowPages(Session& session) {
    std::set<std::string> seen;
    for (const SpoolEntry& entry : ReceivedEntries(session.tree)) seen.insert(MessageKey(entry));
    while (g_must_end == 0) {
        std::set<std::string> there;
        session.now = std::time(nullptr);
        for (const SpoolEntry& entry : ReceivedEntries(session.tree)) {
            const std::string key = MessageKey(entry);
            const SpoolMessage message = ReadMessage(session.tree, entry);
            if (seen.count(key) == 0) {
                if (IsStillWritten(entry, message)) continue;
                PrintMessage(session, entry, message);
                if (!session.json) Print("\n");
            }
            there.insert(key);
        }
        seen.swap(there);
        usleep(kLookPause);
    }
    return kGood;
}

// Hands each message to the program, until one run of it ends well or it has failed too often.
class Dispatcher {
  public:
    Dispatcher(Session& session, FollowState& state, const HandlerOrder& order, int tries,
               long long pause)
        : session_(session), state_(state), order_(order), tries_(tries), pause_(pause) {}

    void Pass() {
        std::vector<std::string> keys;
        for (const SpoolEntry& entry : ReceivedEntries(session_.tree)) {
            if (g_must_end != 0) return;
            const std::string key = MessageKey(entry);
            keys.push_back(key);
            if (IsDue(key)) Serve(entry, key);
        }
        state_.KeepOnly(keys);
    }

  private:
    bool IsDue(const std::string& key) const {
        const Handling handling = state_.Get(key).handling;
        if (handling == Handling::kDone || handling == Handling::kAside) return false;
        const auto next = next_try_.find(key);
        return next == next_try_.end() || std::time(nullptr) >= next->second ||
               // The clock was set back.
               next->second > std::time(nullptr) + pause_;
    }

    void Serve(const SpoolEntry& entry, const std::string& key) {
        const SpoolMessage message = ReadMessage(session_.tree, entry);
        if (IsStillWritten(entry, message)) return;
        if (message.readable != Readable::kGood) {
            Tell(entry, "is no message, passed over");
            state_.Note(key, Handling::kAside);
            return;
        }
        // Begun, and nobody runs it: the router went down meanwhile.
        if (state_.Get(key).handling == Handling::kBegun) {
            return SetAside(entry, message, "its run was cut off: set aside");
        }
        if (state_.Get(key).tries < tries_) RunHandler(order_, entry, message, state_);
        const HandlingRecord record = state_.Get(key);
        if (record.handling == Handling::kDone) {
            Tell(entry, "handled");
            if (session_.Has("--delete")) DeleteEntry(entry);
        } else if (record.tries >= tries_) {
            SetAside(entry, message, "failed too often: set aside");
        } else {
            Tell(entry, "failed, tried again later");
            next_try_[key] = std::time(nullptr) + pause_;
        }
    }

    void SetAside(const SpoolEntry& entry, const SpoolMessage& message, const char* why) {
        if (!state_.PutAside(entry, message)) {
            Tell(entry, "cannot be set aside: no room for it");
            return;
        }
        state_.Note(MessageKey(entry), Handling::kAside);
        Tell(entry, why);
        if (session_.Has("--delete")) DeleteEntry(entry);
    }

    // One line for each message: a program's log.
    static void Tell(const SpoolEntry& entry, const char* what) {
        std::fprintf(stderr, "modemctl: %s %s\n", Escaped(entry.name, false).c_str(), what);
    }

    Session& session_;
    FollowState& state_;
    const HandlerOrder order_;
    const int tries_;
    const long long pause_;
    std::map<std::string, std::time_t> next_try_;
};

void Complain(const std::string& complaint) {
    std::fprintf(stderr, "modemctl: %s\n", Escaped(complaint, false).c_str());
}

// Waits while another one follows, or a run that outlived its modemctl goes on.
bool OpenState(const Session& session, FollowState& state) {
    const std::string directory = StateDirectory(session.Value("--state"));
    std::string complaint = state.Open(directory);
    if (state.IsBusy()) Complain(complaint + ": waiting for it");
    while (state.IsBusy() && g_must_end == 0) {
        usleep(kLookPause);
        complaint = state.Open(directory);
    }
    if (!complaint.empty() && !state.IsBusy()) Complain(complaint);
    return complaint.empty() || state.IsBusy();
}

int FollowWithProgram(Session& session) {
    HandlerOrder order;
    long long pause = 0;
    order.command = session.Value("--exec");
    if (!ParseSpan(session.Value("--time-limit", kUsualTimeLimit), order.time_limit) ||
        !ParseSpan(session.Value("--pause", kUsualPause), pause)) {
        return UsageError("sms", "--time-limit and --pause are seconds, or such as 15m or 2h");
    }
    const std::string tries = session.Value("--tries", kUsualTries);
    if (tries.empty() || !IsInteger(tries) || ToInt(tries) < 1) {
        return UsageError("sms", "--tries is a number above 0");
    }
    FollowState state;
    if (!OpenState(session, state)) return kNotGood;
    Dispatcher dispatcher(session, state, order, ToInt(tries), pause);
    while (g_must_end == 0) {
        dispatcher.Pass();
        usleep(kLookPause);
    }
    return kGood;
}

}  // namespace

int RunSmsFollow(Session& session) {
    CatchEndSignals();
    if (session.Has("--exec")) return FollowWithProgram(session);
    for (const char* const option : {"--state", "--time-limit", "--tries", "--pause", "--delete"}) {
        if (session.Has(option)) {
            return UsageError("sms", std::string(option) + " belongs to --exec");
        }
    }
    return FollowPages(session);
}

}  // namespace modemctl

#include "modemctl/watch.h"

#include <unistd.h>

#include <ctime>
#include <memory>

#include "modemctl/changes.h"
#include "modemctl/diagnosis.h"
#include "modemctl/exit_code.h"
#include "modemctl/log_tail.h"
#include "modemctl/screen.h"
#include "modemctl/signal.h"
#include "modemctl/time_text.h"
#include "modemctl/watch_view.h"
#include "modemctl/why.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr int kPeriod = 2000;  // milliseconds between two looks; the files change every 5 s
constexpr int kWhyPeriod = 10000;
constexpr char kUsualStep[] = "3";
constexpr std::size_t kMostChanges = 500;
constexpr std::size_t kMostRecords = 2000;
constexpr long long kLookBack = 86400;
constexpr long long kScales[] = {2, 5, 10, 30, 60};  // seconds a column

long long MonotonicMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

// The strip shows the call where the daemon keeps one, else whether the network is there.
Hold CallOf(const Snapshot& snapshot, const Chain& chain) {
    if (snapshot.card != Card::kLte) return chain[ChainPart::kRegistration].hold;
    return chain.verdict == kTooOld ? Hold::kUnknown : chain[ChainPart::kCall].hold;
}

class Watch {
  public:
    Watch(Session& session, long long signal_step)
        : session_(session),
          drawing_(!session.json && session.terminal.interactive),
          tail_(session.tree, session.Value("--log")),
          finder_(signal_step),
          waiter_(drawing_ && isatty(STDIN_FILENO) == 1) {
        if (drawing_) screen_ = std::make_unique<Screen>(session_.terminal);
    }

    int Run() {
        long long due = MonotonicMilliseconds();
        for (;;) {
            const long long now = MonotonicMilliseconds();
            if (now >= due) {
                Look();
                due = now + kPeriod;
            }
            if (drawing_) screen_->Draw(DrawWatch(state_, session_));
            const auto left = static_cast<int>(due - MonotonicMilliseconds());
            if (!GoOn(waiter_.Wait(std::max(left, 0)))) return kGood;
        }
    }

  private:
    // False at the end.
    bool GoOn(Wake wake) {
        switch (wake) {
            case Wake::kTime:
                return true;
            case Wake::kKey:
                return TakeKey(waiter_.ReadKey());
            case Wake::kResize:
                if (drawing_) screen_->Refresh();
                return true;
            case Wake::kPause:
                if (drawing_) screen_->GiveBack();
                Waiter::StopProcess();
                if (drawing_) screen_->Take();
                return true;
            case Wake::kEnd:
                return false;
        }
        return false;
    }

    bool TakeKey(int key) {
        constexpr int kClearScreen = 'L' - '@';  // Ctrl-L
        const int page = static_cast<int>(state_.page);
        if (key == 'q' || key == 'Q') return false;
        if (key >= '1' && key < '1' + kWatchPages) ShowPage(key - '1');
        if (key == kKeyRight || key == '\t') ShowPage((page + 1) % kWatchPages);
        if (key == kKeyLeft) ShowPage((page + kWatchPages - 1) % kWatchPages);
        if (key == '-' && scale_ + 1 < std::end(kScales)) ++scale_;
        if ((key == '+' || key == '=') && scale_ > kScales) --scale_;
        if (key == kClearScreen) screen_->Refresh();
        state_.column_seconds = *scale_;
        return true;
    }

    void ShowPage(int page) {
        state_.page = static_cast<WatchPage>(page);
        why_due_ = 0;
        MakeWhy();
    }

    void Look() {
        session_.now = session_.Has("--now") ? session_.now : session_.tree.Now();
        state_.snapshot = TakeSnapshot(session_.tree, session_.now);
        state_.chain = JudgeChain(state_.snapshot, session_.max_age);
        Sample sample;
        sample.when = state_.snapshot.now;
        sample.call = CallOf(state_.snapshot, state_.chain);
        const Signal signal = ReadSignal(state_.snapshot.statistics);
        const bool fresh =
            state_.snapshot.StatisticsFreshness(session_.max_age) == Freshness::kFresh;
        if (fresh && signal.strength != Strength::kUnknown) sample.permille = signal.permille;
        state_.history.Add(sample);
        // What the log says came before its effect was seen.
        std::vector<Change> changes = finder_.Look(state_.snapshot, state_.chain);
        std::vector<Change> said;
        tail_.Poll(session_.now, [&](const LogRecord& record) {
            said.push_back(ChangeOf(record));
            return true;
        });
        changes.insert(changes.begin(), said.begin(), said.end());
        for (const Change& change : changes) Tell(change);
        MakeWhy();
    }

    void Tell(const Change& change) {
        if (session_.json) return Print(ChangeDocument(change, finder_.State()) + "\n");
        if (!drawing_) {
            return Print(ShownTime(change.when) + "  " + session_.terminal.Show(change.Words()) +
                         "\n");
        }
        state_.changes.push_back(change);
        if (state_.changes.size() > kMostChanges) state_.changes.pop_front();
    }

    // The log is read only while its page is looked at, and not at every look: it may be long.
    void MakeWhy() {
        if (state_.page != WatchPage::kWhy || MonotonicMilliseconds() < why_due_) return;
        why_due_ = MonotonicMilliseconds() + kWhyPeriod;
        LogRequest request;
        request.file = session_.Value("--log");
        request.now = session_.now;
        request.since = session_.now - kLookBack;
        std::string complaint;
        const auto records = RecentRecords(session_.tree, request, kMostRecords, complaint);
        state_.why = WhyPage(Diagnose(state_.snapshot, records, session_.max_age), session_);
    }

    Session& session_;
    const bool drawing_;
    LogTail tail_;
    ChangeFinder finder_;
    Waiter waiter_;
    WatchState state_;
    const long long* scale_ = kScales;
    long long why_due_ = 0;
    std::unique_ptr<Screen> screen_;
};

int RunWatch(Session& session) {
    const std::string step = session.Value("--signal-step", kUsualStep);
    if (step.empty() || !IsInteger(step) || ToInt(step) < 1) {
        return UsageError("watch", "--signal-step is a number of dB, at least 1");
    }
    if (session.Value("--log") == "-") {
        return UsageError("watch", "--log is a file: what comes from standard input has no end");
    }
    return Watch(session, ToInt(step)).Run();
}

}  // namespace

const Subcommand kWatchCommand = {
    "watch",
    "",
    "the same, live, with graphs and events",
    "On a terminal: pages that follow the modem. Elsewhere: a line for each change. With --json\n"
    "each change is one object on one line, and holds all that is so then.\n"
    "Keys: 1 to 5, arrows or Tab for the pages, + and - for the time scale, q to end.",
    {{"--log", "FILE", "follow this system log instead of the router's"},
     {"--signal-step", "DB", "a signal has changed when it differs by so much (3)"}},
    {{"modemctl watch", "on a terminal, also on a serial console"},
     {"modemctl watch --json | mosquitto_pub -l -t router/7/modem", "a fleet's feed"}},
    0,
    RunWatch,
};

}  // namespace modemctl

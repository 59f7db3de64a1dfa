#include "modemctl/screen.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>

#include "modemctl/command_line.h"
#include "support/text.h"

namespace modemctl {

namespace {

// Another screen where there is one, no cursor, no wrapping; and back.
constexpr char kTake[] = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
constexpr char kGiveBack[] = "\x1b[?7h\x1b[?25h\x1b[2J\x1b[H\x1b[?1049l";
constexpr char kClearLine[] = "\x1b[K";
constexpr int kSequenceMilliseconds = 30;  // the rest of a key's sequence follows at once

volatile std::sig_atomic_t g_resized = 0;
volatile std::sig_atomic_t g_paused = 0;
volatile std::sig_atomic_t g_ended = 0;

void OnSignal(int number) {
    if (number == SIGWINCH) {
        g_resized = 1;
    } else if (number == SIGTSTP) {
        g_paused = 1;
    } else {
        g_ended = 1;
    }
}

constexpr int kSignals[] = {SIGWINCH, SIGTSTP, SIGINT, SIGTERM, SIGHUP};

bool TakeFlag(volatile std::sig_atomic_t& flag) {
    const bool set = flag != 0;
    flag = 0;
    return set;
}

bool HasInput(int milliseconds) {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, milliseconds) > 0;
}

int ReadByte() {
    unsigned char byte = 0;
    return read(STDIN_FILENO, &byte, 1) == 1 ? byte : -1;
}

}  // namespace

Screen::Screen(Terminal& terminal) : terminal_(terminal) {
    has_keys_ = isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &saved_) == 0;
    Take();
}

Screen::~Screen() {
    GiveBack();
}

void Screen::Take() {
    if (taken_) return;
    taken_ = true;
    if (has_keys_) {
        termios raw = saved_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
    Print(kTake);
    Refresh();
}

void Screen::GiveBack() {
    if (!taken_) return;
    taken_ = false;
    if (has_keys_) tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
    // Not Print: that may end the program, which would come here again.
    const ssize_t ignored = write(STDOUT_FILENO, kGiveBack, sizeof(kGiveBack) - 1);
    static_cast<void>(ignored);
}

void Screen::Refresh() {
    AskSize(STDOUT_FILENO, terminal_);
    shown_.clear();
}

void Screen::Draw(const std::vector<std::string>& lines) {
    const auto rows = static_cast<std::size_t>(terminal_.rows);
    std::string changes;
    if (shown_.empty()) changes += "\x1b[2J";
    shown_.resize(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::string line = row < lines.size() ? lines[row] : "";
        if (line == shown_[row]) continue;
        // Cleared first: behind a full line the cursor stands on its last character.
        changes += Format("\x1b[%d;1H", static_cast<int>(row) + 1) + kClearLine + line;
        shown_[row] = line;
    }
    if (!changes.empty()) Print(changes);
}

Waiter::Waiter(bool keys) : keys_(keys) {
    sigset_t ours;
    sigemptyset(&ours);
    for (const int number : kSignals) {
        struct sigaction action = {};
        action.sa_handler = OnSignal;
        sigaction(number, &action, nullptr);
        sigaddset(&ours, number);
    }
    sigprocmask(SIG_BLOCK, &ours, nullptr);
}

Wake Waiter::Wait(int milliseconds) {
    sigset_t open;
    sigprocmask(SIG_SETMASK, nullptr, &open);
    for (const int number : kSignals) sigdelset(&open, number);
    pollfd input = {keys_ ? STDIN_FILENO : -1, POLLIN, 0};
    const timespec length = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    const int ready = ppoll(&input, 1, &length, &open);
    if (TakeFlag(g_ended)) return Wake::kEnd;
    if (TakeFlag(g_paused)) return Wake::kPause;
    if (TakeFlag(g_resized)) return Wake::kResize;
    return ready > 0 ? Wake::kKey : Wake::kTime;
}

int Waiter::ReadKey() {
    const int first = ReadByte();
    if (first < 0) {
        keys_ = false;
        return 0;
    }
    if (first != '\x1b' || !HasInput(kSequenceMilliseconds)) return first;
    const int second = ReadByte();
    if (second != '[' && second != 'O') return kKeyNothing;
    int last = ReadByte();
    while (last >= 0 && last < '@' && HasInput(kSequenceMilliseconds)) last = ReadByte();
    if (last == 'C') return kKeyRight;
    return last == 'D' ? kKeyLeft : kKeyNothing;
}

void Waiter::StopProcess() {
    raise(SIGSTOP);
}

}  // namespace modemctl

#include "sim/program/runner.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace sim {

namespace {

Micros MonotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kSecond + now.tv_nsec / 1000;
}

int OpenSignals() {
    sigset_t wanted;
    sigemptyset(&wanted);
    signal(SIGPIPE, SIG_IGN);  // whoever reads our standard output may go first
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) sigaddset(&wanted, number);
    sigprocmask(SIG_BLOCK, &wanted, nullptr);
    return signalfd(-1, &wanted, SFD_NONBLOCK | SFD_CLOEXEC);
}

// Milliseconds until `at`, rounded up so that the modem is never asked too early.
int TimeoutUntil(Micros at) {
    if (at == kNever) return -1;
    const Micros left = std::max<Micros>(at - MonotonicNow(), 0);
    constexpr Micros kLongest = 60 * 1000;
    return static_cast<int>(std::min((left + kMillisecond - 1) / kMillisecond, kLongest));
}

std::FILE* OpenLog(const std::string& path) {
    if (path.empty()) return nullptr;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (file < 0) throw std::runtime_error(path + ": " + std::strerror(errno));
    return fdopen(file, "a");
}

std::string Printable(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == '\r') {
            text += "\\r";
        } else if (c == '\n') {
            text += "\\n";
        } else if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            text += Print("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        }
    }
    return text;
}

}  // namespace

Runner::Runner(const RunOptions& options)
    : options_(options),
      modem_(LoadProfile(options.profile), options.seed),
      port_(options.link),
      control_(options.control, [this](const std::string& line) {
          if (!line.empty()) Log('!', line);
          return modem_.Control(line, MonotonicNow());
      }) {
    constexpr std::size_t kHeardLines = 100000;
    modem_.SetHeardLimit(kHeardLines);
    log_ = OpenLog(options.log);
    signals_ = OpenSignals();
    modem_.SetClock(std::time(nullptr), MonotonicNow());
    if (options.speak_up) modem_.Control("set speak-up on", MonotonicNow());
    modem_.on_heard = [this](const HeardCommand& heard) { Log('<', heard.text); };
    modem_.on_call = [this](bool up) {
        Log('!', up ? "call up" : "call down");
        hooks_.Run(up ? options_.on_call_up : options_.on_call_down);
    };
}

Runner::~Runner() {
    if (log_ != nullptr) std::fclose(log_);
    if (signals_ >= 0) close(signals_);
}

void Runner::Run() {
    port_.Open();
    std::printf("%s\n", port_.Path().c_str());
    std::fflush(stdout);
    for (;;) {
        std::vector<pollfd> polled = {{signals_, POLLIN, 0}};
        const short wanted = static_cast<short>(POLLIN | (port_.HasBacklog() ? POLLOUT : 0));
        polled.push_back({port_.Descriptor(), wanted, 0});  // negative while unplugged: ignored
        control_.AddTo(&polled);
        poll(polled.data(), polled.size(), TimeoutUntil(modem_.NextEvent()));
        if (polled[0].revents != 0 && !TakeSignals()) return;
        ServePort(polled[1].revents);
        control_.Handle(polled);
        FollowPlug();
        Transmit();
    }
}

bool Runner::TakeSignals() {
    signalfd_siginfo signal{};
    while (read(signals_, &signal, sizeof(signal)) == sizeof(signal)) {
        if (signal.ssi_signo != static_cast<unsigned>(SIGCHLD)) return false;
        hooks_.Reap();
    }
    return true;
}

void Runner::ServePort(short events) {
    if ((events & POLLOUT) != 0) port_.Flush();
    if ((events & POLLIN) == 0) return;
    const std::string bytes = port_.Read();
    if (!bytes.empty()) modem_.Receive(bytes, MonotonicNow());
}

void Runner::Transmit() {
    const std::string bytes = modem_.Transmit(MonotonicNow());
    if (bytes.empty()) return;
    Log('>', Printable(bytes));
    port_.Write(bytes);
    if (modem_.LosesWhatNobodyReads()) port_.DropBacklog();
}

void Runner::FollowPlug() {
    if (!modem_.Plugged()) {
        port_.Close();
    } else if (!port_.IsOpen()) {
        port_.UseNumber(modem_.PortNumber());
        port_.Open();
        std::printf("%s\n", port_.Path().c_str());
        std::fflush(stdout);
    }
}

void Runner::Log(char direction, const std::string& text) {
    if (log_ == nullptr) return;
    const auto now = static_cast<double>(MonotonicNow()) / static_cast<double>(kSecond);
    std::fprintf(log_, "%.3f %c %s\n", now, direction, text.c_str());
    std::fflush(log_);
}

}  // namespace sim

#include "rig/daemon_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "rig/turns.h"

namespace rig {

namespace {

constexpr long kLookEvery = 50000000;      // nanoseconds between two looks at the process
constexpr double kMostWithoutSleep = 120;  // seconds of a FairClock in which calls are made
constexpr double kMostForTheEnd = 120;     // the same, from the last request to the process's end

std::string ReadFrom(int fd) {
    std::string text;
    char piece[4096];
    ssize_t count = 0;
    while ((count = pread(fd, piece, sizeof(piece), static_cast<off_t>(text.size()))) > 0) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    return text;
}

// Whoever started the tests may have left descriptors open: none of the daemon's.
void CloseWhatTheTestInherited() {
    constexpr int kMost = 1024;
    for (int fd = STDERR_FILENO + 1; fd < kMost; ++fd) fcntl(fd, F_SETFD, FD_CLOEXEC);
}

std::vector<char*> Pointers(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

DaemonProcess::DaemonProcess() {
    memory_fd_ = memfd_create("rig-shared", MFD_CLOEXEC);
    output_fd_ = memfd_create("daemon-output", MFD_CLOEXEC);
    error_fd_ = memfd_create("daemon-errors", MFD_CLOEXEC);
    if (memory_fd_ < 0 || ftruncate(memory_fd_, sizeof(Shared)) != 0) {
        throw std::runtime_error("no shared memory");
    }
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, memory_fd_, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
    memory_ = static_cast<Shared*>(memory);
}

DaemonProcess::~DaemonProcess() {
    if (Running()) {
        kill(process_, SIGKILL);
        Reap();
    }
    munmap(memory_, sizeof(Shared));
    for (const int fd : {memory_fd_, output_fd_, error_fd_, terminal_fd_}) {
        if (fd >= 0) close(fd);
    }
}

void DaemonProcess::Launch(const Launching& launching) {
    int error_fd = error_fd_;
    if (launching.on_terminal) {
        terminal_fd_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
        if (terminal_fd_ < 0 || unlockpt(terminal_fd_) != 0) {
            throw std::runtime_error("no terminal");
        }
        error_fd = open(ptsname(terminal_fd_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    memory_->turn.store(Turn::kDaemon);
    std::fflush(nullptr);
    BindToProcessor(0, -1);
    process_ = fork();
    if (process_ < 0) throw std::runtime_error("no process");
    if (process_ == 0) BecomeDaemon(launching, error_fd);
    if (launching.on_terminal) close(error_fd);
    AwaitRequest();
    // The kernel has put the new process where there is most room.
    BindToProcessor(process_, memory_->processor);
    BindToProcessor(0, memory_->processor);
}

void DaemonProcess::BecomeDaemon(const Launching& launching, int error_fd) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::vector<std::string> environment = launching.environment;
    environment.push_back(std::string(kSharedFdVariable) + "=" + std::to_string(memory_fd_));
    CloseWhatTheTestInherited();
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    fcntl(memory_fd_, F_SETFD, 0);
    dup2(launching.on_terminal ? error_fd : input, 0);
    dup2(output_fd_, 1);
    dup2(error_fd, 2);
    execve(launching.program.c_str(), Pointers(launching.arguments).data(),
           Pointers(environment).data());
    std::fprintf(stderr, "cannot run %s: %s\n", launching.program.c_str(), std::strerror(errno));
    _exit(127);
}

Request DaemonProcess::Resume() {
    GiveTurn(*memory_, Turn::kScenario);
    AwaitRequest();
    return memory_->request;
}

void DaemonProcess::AwaitRequest() {
    clock_ = machine::FairClock();
    now_since_ = calls_since_ = 0;
    const timespec wait = {0, kLookEvery};
    while (!AwaitTurn(*memory_, Turn::kScenario, &wait)) CheckProgress();
    if (memory_->request == Request::kExiting) Reap();
}

// Called about every 50 ms of real time in which no request came.
void DaemonProcess::CheckProgress() {
    if (waitpid(process_, &wait_status_, WNOHANG) == process_) {
        process_ = -1;
        if (WIFSIGNALED(wait_status_)) {
            throw DaemonTrouble("the daemon was ended by signal " +
                                std::to_string(WTERMSIG(wait_status_)));
        }
        throw DaemonTrouble("the daemon ended without a word, status " +
                            std::to_string(WEXITSTATUS(wait_status_)));
    }
    const double now = clock_.Seconds();
    if (memory_->now != seen_now_) now_since_ = now;
    if (memory_->calls != seen_calls_) calls_since_ = now;
    seen_now_ = memory_->now;
    seen_calls_ = memory_->calls;
    if (now - calls_since_ > static_cast<double>(patience_.count()))
        GiveUp("the daemon hangs: it makes no call");
    if (now - now_since_ > kMostWithoutSleep) GiveUp("the daemon is busy: it never sleeps");
}

void DaemonProcess::Kill() {
    kill(process_, SIGKILL);
    Reap();
}

void DaemonProcess::GiveUp(const std::string& why) {
    Kill();
    throw DaemonTrouble(why);
}

// The end takes real time: leak checks, coverage counters.
void DaemonProcess::Reap() {
    machine::FairClock clock;
    while (waitpid(process_, &wait_status_, WNOHANG) != process_) {
        const timespec pause = {0, 200000};
        nanosleep(&pause, nullptr);
        if (clock.Seconds() > kMostForTheEnd) kill(process_, SIGKILL);
    }
    process_ = -1;
}

std::string DaemonProcess::Output() {
    return ReadFrom(output_fd_);
}

std::string DaemonProcess::ErrorOutput() {
    if (terminal_fd_ < 0) return ReadFrom(error_fd_);
    char piece[4096];
    ssize_t count = 0;
    while ((count = read(terminal_fd_, piece, sizeof(piece))) > 0) {
        terminal_text_.append(piece, static_cast<std::size_t>(count));
    }
    return terminal_text_;
}

}  // namespace rig

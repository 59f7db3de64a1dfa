#include "sim/program/hooks.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sim {

namespace {

[[noreturn]] void Execute(const std::string& command) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

void Hooks::Run(const std::string& command) {
    if (command.empty()) return;
    waiting_.push_back(command);
    StartNext();
}

void Hooks::Reap() {
    if (running_ > 0 && waitpid(running_, nullptr, WNOHANG) == running_) running_ = -1;
    StartNext();
}

void Hooks::StartNext() {
    if (running_ > 0 || waiting_.empty()) return;
    const std::string command = std::move(waiting_.front());
    waiting_.pop_front();
    running_ = fork();
    if (running_ == 0) Execute(command);
}

}  // namespace sim

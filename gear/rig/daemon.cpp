#include "rig/daemon.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <stdexcept>
#include <utility>

#include "rig/manners.h"
#include "rig/private_root.h"
#include "rig/program.h"

namespace rig {

namespace {

constexpr char kName[] = "modemd";  // argv[0]
constexpr int kUsualProcess = 4242;

}  // namespace

Daemon::Daemon(std::vector<std::string> arguments)
    : memory_(process_.Memory()), program_(DaemonProgram()), arguments_(std::move(arguments)) {
    memory_.process_id = kUsualProcess;
}

void Daemon::SetEnvironment(const std::string& name, const std::string& value) {
    environment_[name] = value;
}

void Daemon::Signal(int number) {
    if (memory_.signal_count == kMostSignals) throw std::logic_error("too many signals");
    memory_.signals[memory_.signal_count++] = number;
}

void Daemon::SignalAtCall(std::uint64_t call, int number) {
    memory_.signal_at_call = call;
    memory_.signal_at_call_number = number;
}

void Daemon::Kill() {
    end_by_signal_allowed_ = true;
    process_.Kill();
}

int Daemon::ExitStatus() const {
    if (!started_ || Running() || !WIFEXITED(process_.WaitStatus())) return -1;
    return WEXITSTATUS(process_.WaitStatus());
}

int Daemon::EndingSignal() const {
    if (!started_ || Running() || !WIFSIGNALED(process_.WaitStatus())) return 0;
    return WTERMSIG(process_.WaitStatus());
}

std::string Daemon::ErrorOutput() {
    error_output_allowed_ = true;
    return process_.ErrorOutput();
}

std::vector<std::string> Daemon::Environment() const {
    std::map<std::string, std::string> all = {
        {"TZ", "UTC"},
        {"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"},
        {"LD_PRELOAD", PreloadList(program_)},
        {"ASAN_OPTIONS", "exitcode=99:detect_leaks=1:detect_stack_use_after_return=1"},
        {"UBSAN_OPTIONS", "print_stacktrace=1"}};
    for (const auto& [name, value] : environment_) all[name] = value;
    std::vector<std::string> lines;
    for (const auto& [name, value] : all) lines.push_back(name + "=" + value);
    return lines;
}

void Daemon::Start() {
    if (started_) throw std::logic_error("started twice");
    if (!InPrivateRoot()) throw std::logic_error("no private root");
    started_ = true;
    Launch();
}

void Daemon::StartAgain() {
    memory_.exit_now = memory_.log_waits = 0;
    memory_.signal_at_call = 0;
    memory_.signal_count = memory_.journal_size = 0;
    ++memory_.process_id;
    Launch();
}

void Daemon::Launch() {
    DaemonProcess::Launching launching;
    launching.program = program_;
    launching.arguments = {kName};
    launching.arguments.insert(launching.arguments.end(), arguments_.begin(), arguments_.end());
    launching.environment = Environment();
    launching.on_terminal = on_terminal_;
    try {
        process_.Launch(launching);
    } catch (const DaemonTrouble& trouble) {
        TakeTrouble(trouble);
    }
}

void Daemon::Resume() {
    try {
        process_.Resume();
    } catch (const DaemonTrouble& trouble) {
        TakeTrouble(trouble);
    }
}

void Daemon::TakeTrouble(const DaemonTrouble& trouble) {
    const bool expected = end_by_signal_allowed_ && EndingSignal() != 0;
    if (expected) return;
    crashed_ = true;
    ADD_FAILURE() << trouble.what() << "\n" << process_.ErrorOutput();
}

void Daemon::ExpectManners() const {
    if (program_ != DaemonProgram()) return;
    for (const std::string& fault : NeedlessPauses(memory_)) ADD_FAILURE() << "pause: " << fault;
    for (const std::string& fault : WrongModes()) ADD_FAILURE() << fault;
    EXPECT_STREQ(memory_.inheritable, "") << "opened without O_CLOEXEC";
    if (!Running() || memory_.request != Request::kSleep) return;
    for (const std::string& fault : LeakedDescriptors(process_.Id())) {
        ADD_FAILURE() << "left open: " << fault;
    }
}

void Daemon::ExpectGoodEnd() {
    if (EndingSignal() != 0 && !end_by_signal_allowed_ && !crashed_) {
        ADD_FAILURE() << "the daemon was ended by signal " << EndingSignal();
    }
    const std::string errors = process_.ErrorOutput();
    const bool report = errors.find("Sanitizer") != std::string::npos ||
                        errors.find("runtime error:") != std::string::npos;
    if (!crashed_ && !errors.empty() && (report || !error_output_allowed_)) {
        ADD_FAILURE() << "standard error of the daemon:\n" << errors;
    }
}

}  // namespace rig

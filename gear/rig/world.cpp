// How a world runs: the daemon's requests, the events that are due, and simulated time.

#include "rig/world.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include "rig/arguments.h"
#include "rig/private_root.h"
#include "rig/program.h"

namespace rig {

namespace {

constexpr std::size_t kShownEvents = 60;

Micros Later(Micros from, Duration distance) {
    return distance.count() > kNever - from ? kNever : from + distance.count();
}

}  // namespace

World::World(const std::string& arguments) : World(ArgumentsOf(arguments)) {}

World::World(const Exactly& exactly) : World(exactly.arguments) {}

World::World(const std::vector<std::string>& arguments)
    : daemon(arguments),
      trace(daemon.Memory()),
      clock(daemon.Memory(), trace),
      files(daemon.Memory()),
      router(daemon.Memory(), files),
      port(daemon.Memory(), trace, DeviceOf(arguments)),
      modem(daemon.Memory(), port, ProfileOf(arguments)),
      memory_(daemon.Memory()) {
    EmptyPrivateFolders();
    files.Write("/etc/ssh/ssh_host_dsa_key", "");
}

World::~World() {
    if (started_) daemon.ExpectManners();
    Stop();
    if (started_) {
        daemon.ExpectGoodEnd();
        modem.ExpectKnownCommands();
    }
    if (::testing::Test::HasFailure()) PrintStory();
}

void World::Start() {
    modem.Sim().SetClock(clock.WallSeconds(), 0);
    daemon.Start();
    started_ = true;
}

void World::RunFor(Duration duration) {
    Run(Later(memory_.now, duration), nullptr);
}

bool World::RunUntil(const std::function<bool()>& condition, Duration limit) {
    bool held = false;
    memory_.eager = 1;
    Run(Later(memory_.now, limit), [&] { return held = condition(); });
    memory_.eager = 0;
    if (!held) {
        ADD_FAILURE() << (daemon.Running() ? "it did not happen in time"
                                           : "the daemon ended before it");
    }
    return held;
}

bool World::RunUntilLog(const std::string& line, Duration limit) {
    std::size_t looked = trace.Events().size();
    bool found = false;
    const bool held = RunUntil(
        [&] {
            for (; looked < trace.Events().size(); ++looked) {
                const Event& event = trace.Events()[looked];
                if (event.kind == Kind::kLog && event.text == line) found = true;
            }
            return found;
        },
        limit);
    EXPECT_TRUE(held) << "waiting for the log line '" << line << "'";
    return held;
}

bool World::RunUntilCommand(const std::string& command, Duration limit) {
    std::size_t looked = trace.TimedCommands().size();
    bool found = false;
    const bool held = RunUntil(
        [&] {
            for (; looked < trace.TimedCommands().size(); ++looked) {
                if (trace.TimedCommands()[looked].text == command) found = true;
            }
            return found;
        },
        limit);
    EXPECT_TRUE(held) << "waiting for the command '" << command << "'";
    return held;
}

int World::RunToExit(Duration limit) {
    Run(Later(memory_.now, limit), nullptr);
    if (daemon.Running()) {
        ADD_FAILURE() << "the daemon still runs";
    } else if (daemon.EndingSignal() != 0) {
        ADD_FAILURE() << "the daemon was ended by signal " << daemon.EndingSignal();
    }
    return daemon.ExitStatus();
}

void World::Run(Micros stop, const std::function<bool()>& condition) {
    if (!started_) {
        ADD_FAILURE() << "the daemon was not started";
        return;
    }
    while (daemon.Running()) {
        if (condition && condition()) return;
        if (memory_.request == Request::kSleep && memory_.now >= stop) return;
        Step(stop);
    }
    if (condition) condition();
}

// One thing: the daemon's request is served, or time goes on to the next event.
void World::Step(Micros stop) {
    switch (memory_.request) {
        case Request::kSleep:
            Sleep(stop);
            return;
        case Request::kHello:
        case Request::kSync:
        case Request::kExiting:
            RunDue();
            break;
        case Request::kSystem:
            ServeShell();
            if (memory_.request == Request::kSleep) return;
            break;
        case Request::kOpenPort:
            port.Open(RequestText());
            break;
        case Request::kVirtual:
            ServeKernelFile();
            break;
    }
    Resume(stop);
}

void World::Sleep(Micros stop) {
    if (NextEvent() <= memory_.now) RunDue();
    const bool interrupted = memory_.signal_count > 0 && !in_shell_;
    if (memory_.now < memory_.sleep_until && !interrupted) {
        memory_.now = std::min({memory_.sleep_until, NextEvent(), stop});
        RunDue();
        return;
    }
    in_shell_ = false;
    Resume(stop);
}

void World::Resume(Micros stop) {
    memory_.horizon = std::min(NextEvent(), stop);
    daemon.Resume();
    TakeJournal();
}

void World::TakeJournal() {
    for (std::uint32_t place = 0; place < memory_.journal_size;) {
        JournalRecord record = {};
        std::memcpy(&record, memory_.journal + place, sizeof(record));
        place += static_cast<std::uint32_t>(sizeof(record));
        std::string text(memory_.journal + place, record.size);
        place += record.size;
        if (record.kind == Kind::kWrite) modem.Receive(text, record.at);
        if (record.kind == Kind::kClose) port.Close();
        trace.Add({record.at, record.kind, record.number, std::move(text)});
    }
    memory_.journal_size = 0;
}

// Everything that is due now: first the story's own events, in their order, then the modem's.
void World::RunDue() {
    clock.RunDue();
    modem.RunDue();
}

Micros World::NextEvent() const {
    return std::min(clock.NextEvent(), modem.NextEvent());
}

void World::ServeShell() {
    const std::string line = RequestText();
    RunDue();
    const Router::ShellEnd end = router.RunShell(line);
    memory_.result = end.status < 0 ? -1 : end.status << 8;  // as waitpid would give it
    trace.Add({memory_.now, Kind::kShell, end.status, line});
    if (end.taken > Duration::zero()) {
        in_shell_ = true;
        memory_.sleep_until = Later(memory_.now, end.taken);
        memory_.request = Request::kSleep;
    }
}

void World::ServeKernelFile() {
    const std::optional<std::string> content = router.KernelFile(RequestText());
    memory_.error = content ? 0 : ENOENT;
    const std::string text = content.value_or("");
    memory_.text_size = static_cast<std::uint32_t>(std::min(text.size(), kTextSize));
    std::memcpy(memory_.text, text.data(), memory_.text_size);
}

void World::Stop() {
    if (!daemon.Running()) return;
    memory_.exit_now = 1;
    do {
        memory_.signal_count = 0;
        if (memory_.request == Request::kOpenPort) port.Open(RequestText());
        if (memory_.request == Request::kVirtual) ServeKernelFile();
        if (memory_.request == Request::kSystem) memory_.result = 0;
        Resume(memory_.now);
    } while (daemon.Running());
}

void World::StartAgain(Duration later) {
    if (!started_ || daemon.Running()) throw std::logic_error("it runs, or was never started");
    const Micros then = Later(memory_.now, later);
    while (memory_.now < then) {
        memory_.now = std::min(NextEvent(), then);
        RunDue();
    }
    in_shell_ = false;
    port.Close();
    daemon.StartAgain();
}

void World::PrintStory() {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::cout << "What happened last:\n";
    trace.PrintTail(std::cout, kShownEvents);
    if (test == nullptr) return;
    std::cout << "Replay: RIG_SEED=" << Seed() << " " << TestProgram()
              << " --gtest_filter=" << test->test_suite_name() << "." << test->name() << "\n";
}

}  // namespace rig

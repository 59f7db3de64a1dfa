// How a world runs: the daemon's requests, the events that are due, and simulated time.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "rig/shell_effects.h"
#include "rig/world.h"

namespace rig {

namespace {

Micros Later(Micros from, Duration distance) {
    return distance.count() > kNever - from ? kNever : from + distance.count();
}

}  // namespace

void World::RunFor(Duration duration) {
    Run(Later(memory_.now, duration), nullptr);
}

bool World::RunUntil(const std::function<bool()>& condition, Duration limit) {
    bool held = false;
    memory_.eager = 1;
    Run(Later(memory_.now, limit), [&] { return held = condition(); });
    memory_.eager = 0;
    if (!held) {
        ADD_FAILURE() << (Running() ? "it did not happen in time" : "the daemon ended before it");
    }
    return held;
}

int World::RunToExit(Duration limit) {
    Run(Later(memory_.now, limit), nullptr);
    if (Running()) {
        ADD_FAILURE() << "the daemon still runs";
    } else if (EndingSignal() != 0) {
        ADD_FAILURE() << "the daemon was ended by signal " << EndingSignal();
    }
    return ExitStatus();
}

void World::Run(Micros stop, const std::function<bool()>& condition) {
    if (!started_) {
        ADD_FAILURE() << "the daemon was not started";
        return;
    }
    try {
        while (Running()) {
            if (condition && condition()) return;
            if (memory_.request == Request::kSleep && memory_.now >= stop) return;
            Step(stop);
        }
    } catch (const DaemonTrouble& trouble) {
        TakeTrouble(trouble);
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
            OpenDevice();
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
    try {
        process_.Resume();
    } catch (const DaemonTrouble&) {
        TakeJournal();
        throw;
    }
    TakeJournal();
}

void World::TakeJournal() {
    for (std::uint32_t place = 0; place < memory_.journal_size;) {
        JournalRecord record = {};
        std::memcpy(&record, memory_.journal + place, sizeof(record));
        place += static_cast<std::uint32_t>(sizeof(record));
        std::string text(memory_.journal + place, record.size);
        place += record.size;
        if (record.kind == Kind::kWrite) peer_->Receive(text, record.at);
        if (record.kind == Kind::kClose) port_open_ = false;
        if (Keeps(record.kind))
            trace_.Add({record.at, record.kind, record.number, std::move(text)});
    }
    memory_.journal_size = 0;
}

// Everything that is due now: first the story's own events, in their order, then the modem's.
void World::RunDue() {
    while (!events_.empty() && events_.top().at <= memory_.now) {
        const Action action = events_.top().action;
        events_.pop();
        action();
    }
    while (peer_->NextEvent() <= memory_.now) Deliver(peer_->Transmit(memory_.now));
    Deliver(peer_->Transmit(memory_.now));
}

Micros World::NextEvent() const {
    const Micros own = events_.empty() ? kNever : events_.top().at;
    return std::min(own, peer_->NextEvent());
}

// Bytes for a port that nobody has open are lost, as they are behind a real driver.
void World::Deliver(const std::string& bytes) {
    if (bytes.empty() || !port_open_ || memory_.unplugged != 0) return;
    Add(Kind::kAnswer, 0, bytes);
    for (const char byte : bytes) {
        if (memory_.receive_tail - memory_.receive_head == kReceiveSize) {
            ADD_FAILURE() << "the modem sent more than the rig can hold";
            return;
        }
        memory_.receive[memory_.receive_tail++ % kReceiveSize] = byte;
    }
}

void World::OpenDevice() {
    const std::string path(memory_.text, memory_.text_size);
    memory_.error = path == memory_.device ? device_error_ : ENOENT;
    Add(Kind::kOpen, memory_.error, path);
    if (memory_.error != 0) return;
    port_open_ = true;
    memory_.unplugged = 0;
    memory_.receive_head = memory_.receive_tail;
}

void World::ServeShell() {
    const std::string line(memory_.text, memory_.text_size);
    RunDue();
    shell_takes_ = Duration::zero();
    const auto fits = [&](const Handler& one) { return line.rfind(one.start, 0) == 0; };
    const auto handler = std::find_if(shell_handlers_.rbegin(), shell_handlers_.rend(), fits);
    const int status =
        handler != shell_handlers_.rend() ? handler->handler(line) : DefaultShell(line);
    memory_.result = status < 0 ? -1 : status << 8;  // as waitpid would give it
    Add(Kind::kShell, status, line);
    if (shell_takes_ > Duration::zero()) {
        in_shell_ = true;
        memory_.sleep_until = Later(memory_.now, shell_takes_);
        memory_.request = Request::kSleep;
    }
}

void World::ServeKernelFile() {
    const std::string path(memory_.text, memory_.text_size);
    const std::optional<std::string> content = KernelFile(path);
    memory_.error = content ? 0 : ENOENT;
    const std::string text = content.value_or("");
    memory_.text_size = static_cast<std::uint32_t>(std::min(text.size(), kTextSize));
    std::memcpy(memory_.text, text.data(), memory_.text_size);
}

std::optional<std::string> World::KernelFile(const std::string& path) const {
    if (path == "/proc/uptime") {
        if (!uptime_) return std::nullopt;
        const double seconds = static_cast<double>(*uptime_ + memory_.now) / 1e6;
        char text[64];
        std::snprintf(text, sizeof(text), "%.2f %.2f\n", seconds, seconds);
        return text;
    }
    if (path == "/sys/class/net/wwan0/statistics/tx_bytes") {
        if (!tx_bytes_) return std::nullopt;
        return std::to_string(tx_bytes_(Now())) + "\n";
    }
    const auto found = processes_.find(path);
    if (found == processes_.end()) return std::nullopt;
    return found->second;
}

void World::TakeTrouble(const DaemonTrouble& trouble) {
    const bool expected = end_by_signal_allowed_ && EndingSignal() != 0;
    if (expected) return;
    crashed_ = true;
    ADD_FAILURE() << trouble.what() << "\n" << process_.ErrorOutput();
}

void World::Stop() {
    if (!Running()) return;
    memory_.exit_now = 1;
    try {
        do {
            memory_.signal_count = 0;
            if (memory_.request == Request::kOpenPort) OpenDevice();
            if (memory_.request == Request::kVirtual) ServeKernelFile();
            if (memory_.request == Request::kSystem) memory_.result = 0;
            Resume(memory_.now);
        } while (Running());
    } catch (const DaemonTrouble& trouble) {
        TakeTrouble(trouble);
    }
}

}  // namespace rig

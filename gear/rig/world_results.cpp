// What a story asks of its world when something has happened.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>

#include "rig/world.h"

namespace rig {

namespace {

std::vector<Duration> ToDurations(const std::vector<Micros>& times) {
    return std::vector<Duration>(times.begin(), times.end());
}

}  // namespace

bool World::RunUntilLog(const std::string& line, Duration limit) {
    const std::size_t before = CountLog(line);
    std::size_t looked = trace_.Events().size();
    std::size_t found = before;
    const bool held = RunUntil(
        [&] {
            for (; looked < trace_.Events().size(); ++looked) {
                const rig::Event& event = trace_.Events()[looked];
                if (event.kind == Kind::kLog && event.text == line) ++found;
            }
            return found > before;
        },
        limit);
    EXPECT_TRUE(held) << "waiting for the log line '" << line << "'";
    return held;
}

bool World::RunUntilCommand(const std::string& command, Duration limit) {
    std::size_t looked = trace_.Commands().size();
    bool found = false;
    const bool held = RunUntil(
        [&] {
            for (; looked < trace_.Commands().size(); ++looked) {
                if (trace_.Commands()[looked].text == command) found = true;
            }
            return found;
        },
        limit);
    EXPECT_TRUE(held) << "waiting for the command '" << command << "'";
    return held;
}

std::vector<std::string> World::Commands() const {
    return CommandsMatching("");
}

std::vector<std::string> World::CommandsMatching(const std::string& start) const {
    std::vector<std::string> texts;
    for (const Command& command : trace_.Commands()) {
        if (command.text.rfind(start, 0) == 0) texts.push_back(command.text);
    }
    return texts;
}

std::vector<FileVersion> World::Versions(const std::string& path) const {
    return trace_.Versions(path);
}

std::vector<Duration> World::LogTimes(const std::string& line) const {
    return ToDurations(trace_.Times(Kind::kLog, line));
}

std::vector<Duration> World::ShellTimes(const std::string& line) const {
    return ToDurations(trace_.Times(Kind::kShell, line));
}

std::vector<Duration> World::CommandTimes(const std::string& command) const {
    std::vector<Duration> times;
    for (const Command& one : trace_.Commands()) {
        if (one.text == command) times.emplace_back(one.at);
    }
    return times;
}

std::size_t World::CountLog(const std::string& line) const {
    return trace_.Times(Kind::kLog, line).size();
}

std::size_t World::CountLogContaining(const std::string& part) const {
    const std::vector<std::string> lines = Log();
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(),
        [&](const std::string& line) { return line.find(part) != std::string::npos; }));
}

void World::Keep(std::initializer_list<Kind> kinds) {
    memory_.kept_kinds = 0;
    for (const Kind kind : kinds) memory_.kept_kinds |= KindBit(kind);
}

void World::Add(Kind kind, int number, std::string text) {
    if (Keeps(kind)) trace_.Add({memory_.now, kind, number, std::move(text)});
}

void World::Note(const std::string& remark) {
    Add(Kind::kNote, 0, remark);
}

int World::ExitStatus() const {
    if (!started_ || Running() || !WIFEXITED(process_.WaitStatus())) return -1;
    return WEXITSTATUS(process_.WaitStatus());
}

int World::EndingSignal() const {
    if (!started_ || Running() || !WIFSIGNALED(process_.WaitStatus())) return 0;
    return WTERMSIG(process_.WaitStatus());
}

std::string World::Output() {
    return process_.Output();
}

std::string World::ErrorOutput() {
    error_output_allowed_ = true;
    return process_.ErrorOutput();
}

void World::ExpectLogInOrder(const std::vector<std::string>& lines) const {
    const std::vector<std::string> log = Log();
    auto place = log.begin();
    for (const std::string& line : lines) {
        const auto found = std::find(place, log.end(), line);
        if (found == log.end()) {
            const bool elsewhere = std::find(log.begin(), log.end(), line) != log.end();
            ADD_FAILURE() << (elsewhere ? "logged, but not at this place: '" : "not logged: '")
                          << line << "'";
            return;
        }
        place = found + 1;
    }
}

void World::ExpectNoLog(const std::string& part) const {
    for (const std::string& line : Log()) {
        if (line.find(part) == std::string::npos) continue;
        ADD_FAILURE() << "logged: '" << line << "'";
        return;
    }
}

}  // namespace rig

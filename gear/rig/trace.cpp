#include "rig/trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>

#include "rig/copy_text.h"
#include "rig/program.h"

namespace rig {

namespace {

constexpr std::size_t kMostShown = 200;  // characters of a text

const char* const kNames[kKindCount] = {"log",    "write",  "no write", "answer", "open",
                                        "close",  "tcseta", "shell",    "sleep",  "file",
                                        "unlink", "signal", "clock",    "exit",   "note"};

std::string Readable(const std::string& text, std::size_t most = kMostShown) {
    std::string readable;
    for (const char c : text.substr(0, most)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r') {
            readable += "\\r";
        } else if (c == '\n') {
            readable += "\\n";
        } else if (byte < ' ' || byte > '~') {
            char code[8];
            std::snprintf(code, sizeof(code), "\\x%02x", byte);
            readable += code;
        } else {
            readable += c;
        }
    }
    if (text.size() > most) readable += "... " + std::to_string(text.size()) + " bytes";
    return readable;
}

std::string ReadableSettings(const std::string& bytes) {
    termio line = {};
    if (bytes.size() != sizeof(line)) return "?";
    std::memcpy(&line, bytes.data(), sizeof(line));
    char text[96];
    std::snprintf(text, sizeof(text), "iflag %#o oflag %#o cflag %#o lflag %#o min %d time %d",
                  line.c_iflag, line.c_oflag, line.c_cflag, line.c_lflag, line.c_cc[VMIN],
                  line.c_cc[VTIME]);
    return text;
}

bool HasNumber(Kind kind) {
    return kind == Kind::kShell || kind == Kind::kSleep || kind == Kind::kSignal ||
           kind == Kind::kClock || kind == Kind::kExit || kind == Kind::kOpen ||
           kind == Kind::kWriteFailed;
}

}  // namespace

bool operator==(const Event& a, const Event& b) {
    return a.at == b.at && a.kind == b.kind && a.number == b.number && a.text == b.text;
}

namespace {

void Print(std::ostream& out, const Event& event, std::size_t most) {
    char head[64];
    std::snprintf(head, sizeof(head), "%14.6f  %-8s ", static_cast<double>(event.at) / 1e6,
                  kNames[static_cast<std::size_t>(event.kind)]);
    out << head;
    if (event.kind == Kind::kSettings) {
        out << ReadableSettings(event.text);
        return;
    }
    if (event.kind == Kind::kFile) {
        const auto path = static_cast<std::size_t>(event.number);
        out << Readable(event.text.substr(0, path), most);
        if (most > kMostShown) out << ' ' << Readable(event.text.substr(path), most);
        return;
    }
    if (HasNumber(event.kind)) out << event.number << ' ';
    out << Readable(event.text, most);
}

// A file of its own for each world of a test, in the folder that RIG_TRACES names.
std::unique_ptr<std::ostream> TraceFile(const char* folder) {
    static std::map<std::string, int> worlds;
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name =
        test == nullptr ? "none" : std::string(test->test_suite_name()) + "." + test->name();
    std::replace(name.begin(), name.end(), '/', '_');
    const std::string number = std::to_string(++worlds[name]);
    return std::make_unique<std::ofstream>(folder + ("/" + name) + "." + number + ".trace");
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Event& event) {
    Print(out, event, kMostShown);
    return out;
}

Trace::Trace(Shared& memory) : memory_(memory) {
    memory_.kept_kinds = ~KindBit(Kind::kSleep);
    const char* folder = std::getenv(kTracesVariable);
    if (folder == nullptr) return;
    copy_ = TraceFile(folder);
    KeepSleeps();
}

void Trace::Keep(std::initializer_list<Kind> kinds) {
    memory_.kept_kinds = 0;
    for (const Kind kind : kinds) memory_.kept_kinds |= KindBit(kind);
}

void Trace::Watch(const std::string& path) {
    if (memory_.watched_count == kMostPaths) throw std::logic_error("too many files watched");
    CopyText(memory_.watched[memory_.watched_count++], path);
}

void Trace::Note(const std::string& remark) {
    Add({memory_.now, Kind::kNote, 0, remark});
}

void Trace::Add(Event event) {
    if ((memory_.kept_kinds & KindBit(event.kind)) == 0) return;
    if (copy_) {
        Print(*copy_, event, std::string::npos);
        *copy_ << '\n';
    }
    if (event.kind == Kind::kWrite) JoinCommand(event);
    events_.push_back(std::move(event));
}

void Trace::Clear() {
    events_.clear();
    commands_.clear();
}

void Trace::JoinCommand(const Event& write) {
    for (const char c : write.text) {
        if (c == '\0' || c == '\n') continue;
        if (c != '\r') {
            unfinished_ += c;
            continue;
        }
        commands_.push_back({write.at, unfinished_});
        unfinished_.clear();
    }
}

std::vector<std::string> Trace::CommandsMatching(const std::string& start) const {
    std::vector<std::string> texts;
    for (const Command& command : commands_) {
        if (command.text.rfind(start, 0) == 0) texts.push_back(command.text);
    }
    return texts;
}

std::vector<Event> Trace::Of(Kind kind) const {
    std::vector<Event> found;
    for (const Event& event : events_) {
        if (event.kind == kind) found.push_back(event);
    }
    return found;
}

std::vector<std::string> Trace::Texts(Kind kind) const {
    std::vector<std::string> texts;
    for (const Event& event : events_) {
        if (event.kind == kind) texts.push_back(event.text);
    }
    return texts;
}

std::vector<Duration> Trace::Times(Kind kind, const std::string& text) const {
    std::vector<Duration> times;
    for (const Event& event : events_) {
        if (event.kind == kind && event.text == text) times.emplace_back(event.at);
    }
    return times;
}

std::vector<Duration> Trace::LogTimes(const std::string& line) const {
    return Times(Kind::kLog, line);
}

std::vector<Duration> Trace::ShellTimes(const std::string& line) const {
    return Times(Kind::kShell, line);
}

std::vector<Duration> Trace::CommandTimes(const std::string& command) const {
    std::vector<Duration> times;
    for (const Command& one : commands_) {
        if (one.text == command) times.emplace_back(one.at);
    }
    return times;
}

std::size_t Trace::CountLog(const std::string& line) const {
    return LogTimes(line).size();
}

std::size_t Trace::CountLogContaining(const std::string& part) const {
    const std::vector<std::string> lines = Log();
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(),
        [&](const std::string& line) { return line.find(part) != std::string::npos; }));
}

std::vector<FileVersion> Trace::Versions(const std::string& path) const {
    std::vector<FileVersion> versions;
    for (const Event& event : events_) {
        const auto size = static_cast<std::size_t>(event.number);
        if (event.kind != Kind::kFile || event.text.compare(0, size, path) != 0) continue;
        versions.push_back({event.at, event.text.substr(size)});
    }
    return versions;
}

void Trace::ExpectLogInOrder(const std::vector<std::string>& lines) const {
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

void Trace::ExpectNoLog(const std::string& part) const {
    for (const std::string& line : Log()) {
        if (line.find(part) == std::string::npos) continue;
        ADD_FAILURE() << "logged: '" << line << "'";
        return;
    }
}

void Trace::PrintTail(std::ostream& out, std::size_t count) const {
    const std::size_t first = events_.size() > count ? events_.size() - count : 0;
    if (first > 0) out << "  ... " << first << " events before\n";
    for (std::size_t i = first; i < events_.size(); ++i) out << events_[i] << '\n';
}

}  // namespace rig

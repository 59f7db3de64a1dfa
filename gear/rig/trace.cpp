#include "rig/trace.h"

#include <cstdio>
#include <cstring>

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

}  // namespace

std::ostream& operator<<(std::ostream& out, const Event& event) {
    Print(out, event, kMostShown);
    return out;
}

void Trace::Add(Event event) {
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

std::vector<Event> Trace::Of(Kind kind) const {
    return Where([kind](const Event& event) { return event.kind == kind; });
}

std::vector<Event> Trace::Where(const std::function<bool(const Event&)>& wanted) const {
    std::vector<Event> found;
    for (const Event& event : events_) {
        if (wanted(event)) found.push_back(event);
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

std::vector<Micros> Trace::Times(Kind kind, const std::string& text) const {
    std::vector<Micros> times;
    for (const Event& event : events_) {
        if (event.kind == kind && event.text == text) times.push_back(event.at);
    }
    return times;
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

void Trace::PrintTail(std::ostream& out, std::size_t count) const {
    const std::size_t first = events_.size() > count ? events_.size() - count : 0;
    if (first > 0) out << "  ... " << first << " events before\n";
    for (std::size_t i = first; i < events_.size(); ++i) out << events_[i] << '\n';
}

}  // namespace rig

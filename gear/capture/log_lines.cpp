#include "capture/log_lines.h"

#include <cctype>
#include <cstdio>
#include <regex>

#include "modemctl/log_source.h"
#include "support/text.h"

namespace capture {

namespace {

constexpr std::size_t kWrapsFrom = 1000;     // shorter lines are never wrapped
constexpr std::size_t kLongestNotice = 300;  // of another program; longer ones are not looked at
constexpr std::size_t kLongestText = 1 << 20;
constexpr int kMostRepeats = 10000;

bool IsOctal(char c) {
    return c >= '0' && c <= '7';
}

// The piece of a dump that a logger has put on a line of its own.
bool IsHexPieces(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789abcdef ") == std::string::npos;
}

// What has none is the rest of a text with line ends, from a logger that writes them as they are.
bool HasStamp(const std::string& line) {
    static const std::regex kStart(
        "(?:<[0-9]{1,3}>)?(?:(?:[A-Z][a-z]{2} )?[A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:|"
        "[0-9]{4}-[0-9]{2}-[0-9]{2}[T ]).*");
    constexpr std::size_t kLongestStart = 40;
    return std::regex_match(line.substr(0, kLongestStart), kStart);
}

// A file that went through a system whose lines end in CR LF.
bool HasDosLines(const std::string& log) {
    for (auto feed = log.find('\n'); feed != std::string::npos; feed = log.find('\n', feed + 1)) {
        if (feed == 0 || log[feed - 1] != '\r') return false;
    }
    return Contains(log, "\n");
}

// Behind the seconds of an ISO stamp: ".123456".
std::int64_t FractionOf(const std::string& line, bool& exact) {
    constexpr std::size_t kPoint = 19;
    exact =
        line.size() > kPoint + 1 && line[4] == '-' && (line[kPoint] == '.' || line[kPoint] == ',');
    std::int64_t micros = 0;
    std::int64_t unit = 100000;
    for (std::size_t at = kPoint + 1; exact && at < line.size() && unit > 0; ++at, unit /= 10) {
        if (std::isdigit(static_cast<unsigned char>(line[at])) == 0) break;
        micros += (line[at] - '0') * unit;
    }
    return micros;
}

int NumberIn(const std::string& digits) {
    return digits.size() > 6 ? kMostRepeats : ToInt(digits);
}

class Reader {
  public:
    explicit Reader(std::time_t now) : now_(now) {}

    void Take(const std::string& raw) {
        ++number_;
        modemctl::LogRecord record;
        if (modemctl::ParseLogLine(raw, now_, record)) {
            TakeOurs(raw, record);
        } else {
            TakeForeign(raw);
        }
        last_length_ = raw.size();
    }

    std::vector<LogLine> lines;

  private:
    void TakeOurs(const std::string& raw, const modemctl::LogRecord& record) {
        // rsyslog folds "message repeated 3 times: [ the text]" under the program's own name.
        static const std::regex kFolded("message repeated ([0-9]+) times: \\[ ?(.*)\\]");
        std::smatch match;
        const bool notice = record.text.compare(0, 17, "message repeated ") == 0;
        if (notice && record.text.size() < kLongestNotice &&
            std::regex_match(record.text, match, kFolded)) {
            return Repeat(NumberIn(match[1]));
        }
        if (IsContinued() && IsHexPieces(record.text)) return Continue(record.text);
        LogLine line;
        line.when = std::int64_t{record.when} * 1000000 + FractionOf(raw, line.exact);
        line.text = record.text;
        line.place = {number_, raw.size() - record.text.size() + 1};
        NoteProcess(raw, line.place.column);
        lines.push_back(line);
        ours_was_last_ = true;
    }

    void TakeForeign(const std::string& raw) {
        static const std::regex kFolded(".*last message repeated ([0-9]+) times?.*");
        static const std::regex kThrownAway(
            ".*(?:lost [0-9]+ messages|begin to drop messages|[Ss]uppressed [0-9]+ messages)"
            "(?: from (?:pid )?([^ ]+))?.*");
        std::smatch match;
        if (IsContinued() && ours_was_last_ && IsHexPieces(raw)) return Continue(raw);
        if (ours_was_last_ && !HasStamp(raw)) return Continue("\n" + raw);
        if (raw.size() < kLongestNotice) {
            if (std::regex_match(raw, match, kFolded)) {
                if (ours_was_last_) Repeat(NumberIn(match[1]));
                return;
            }
            if (std::regex_match(raw, match, kThrownAway) && IsAboutUs(match[1])) Lose();
        }
        ours_was_last_ = false;
    }

    // A dump that ends at a logger's limit goes on behind it.
    bool IsContinued() const {
        return !lines.empty() && lines.back().kind == LogLine::kSaid &&
               last_length_ >= kWrapsFrom &&
               lines.back().text.compare(0, 14, "Raw Response: ") == 0;
    }

    void Continue(const std::string& text) {
        if (lines.back().text.size() < kLongestText) lines.back().text += text;
    }

    void Repeat(int times) {
        if (lines.empty() || lines.back().kind != LogLine::kSaid) return;
        const LogLine line = lines.back();
        for (int i = 0; i < times && i < kMostRepeats; ++i) lines.push_back(line);
    }

    void Lose() {
        LogLine line;
        line.kind = LogLine::kLost;
        line.place = {number_, 1};
        lines.push_back(line);
    }

    // "modemd[42]: "
    void NoteProcess(const std::string& raw, std::size_t column) {
        const std::string head = raw.substr(0, column);
        const auto open = head.rfind('[');
        const auto close = head.rfind(']');
        if (open == std::string::npos || close == std::string::npos || close < open) return;
        process_ = head.substr(open + 1, close - open - 1);
    }

    // Who does not say whose messages were thrown away may mean ours.
    bool IsAboutUs(const std::string& who) const {
        const bool id = !who.empty() && std::isdigit(static_cast<unsigned char>(who[0])) != 0;
        if (id) return process_.empty() || who == process_;
        return who.empty() || Contains(who, "modemd");
    }

    std::time_t now_;
    std::size_t number_ = 0;
    std::size_t last_length_ = 0;
    bool ours_was_last_ = false;
    std::string process_;
};

}  // namespace

std::vector<LogLine> ReadLogLines(const std::string& log, std::time_t now) {
    Reader reader(now);
    const bool dos_lines = HasDosLines(log);
    for (std::size_t at = 0; at < log.size();) {
        const auto feed = log.find('\n', at);
        const std::size_t end = feed == std::string::npos ? log.size() : feed;
        std::string line = log.substr(at, end - at);
        if (dos_lines && !line.empty() && line.back() == '\r') line.pop_back();
        reader.Take(line);
        at = end + 1;
    }
    return reader.lines;
}

std::string WithoutLogEscapes(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool octal = text[i] == '#' && i + 3 < text.size() && text[i + 1] <= '3' &&
                           IsOctal(text[i + 1]) && IsOctal(text[i + 2]) && IsOctal(text[i + 3]);
        if (octal) {
            bytes += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 +
                                       (text[i + 3] - '0'));
            i += 3;
        } else if (text.compare(i, std::string::npos, "^Z") == 0) {
            bytes += '\x1a';
            ++i;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

}  // namespace capture

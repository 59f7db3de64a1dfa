// One walk over the lines. What the daemon does between two lines is known: it writes a command,
// waits 20 ms, ends the line, and looks for the answer every 50 ms until nothing is there.

#include "capture/dialogue.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "support/text.h"

namespace capture {

namespace {

constexpr std::int64_t kTerminatorPause = 20 * kMillisecond;
constexpr std::int64_t kReadPeriod = 50 * kMillisecond;
constexpr std::int64_t kSecond = 1000 * kMillisecond;
constexpr std::size_t kCutFrom = 1000;  // a dump of that length may have lost its end

constexpr char kSending[] = "Sending command: ";
constexpr char kClear[] = "Clear Response: ";
constexpr char kRaw[] = "Raw Response: ";
constexpr char kReturning[] = "DEBUG: returning string class : ";

bool TakeLabel(const std::string& text, const std::string& label, std::string& rest) {
    if (text.compare(0, label.size(), label) != 0) return false;
    rest = text.substr(label.size());
    return true;
}

bool IsHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool IsDaemonStart(const std::string& text) {
    int length = 0;
    std::sscanf(text.c_str(), "v%*d.%*d starting%n", &length);
    return length > 0 && static_cast<std::size_t>(length) == text.size();
}

// Bytes that were read in one go.
struct Read {
    std::int64_t when = 0;
    bool exact = false;
    std::string bytes;
    std::vector<Place> places;
    bool whole = true;
};

// "0d 0a 4f 4b "
Read FromDump(const LogLine& line, const std::string& dump) {
    Read read;
    read.when = line.when;
    read.exact = line.exact;
    Place place = line.place;
    place.column += sizeof(kRaw) - 1;
    for (std::size_t at = 0; at < dump.size(); at += 3) {
        if (at + 1 >= dump.size() || !IsHex(dump[at]) || !IsHex(dump[at + 1])) {
            read.whole = false;
            break;
        }
        read.bytes += static_cast<char>(std::stoi(dump.substr(at, 2), nullptr, 16));
        read.places.push_back({place.line, place.column + at});
    }
    if (line.text.size() >= kCutFrom) read.whole = read.whole && dump.back() == ' ';
    return read;
}

class Walk {
  public:
    Dialogue Take(const std::vector<LogLine>& lines) {
        for (const LogLine& line : lines) {
            if (line.kind == LogLine::kLost) {
                Lose(line.place, "messages were thrown away by the logger");
            } else {
                TakeLine(line);
            }
        }
        if (open_) Lose(source_.command, "the log ends before the answer does");
        return dialogue_;
    }

  private:
    void TakeLine(const LogLine& line) {
        if (dialogue_.began == 0) dialogue_.began = line.when;
        std::string rest;
        unsigned count = 0;
        if (std::sscanf(line.text.c_str(), "read %u bytes from port", &count) == 1 && count > 0) {
            return TakeCount(line, count);
        }
        CommitRead();  // nobody counted it: it was thrown away, or is the answer to a signal query
        if (IsDaemonStart(line.text)) {
            Finish();
            Begin(line, "");
        } else if (TakeLabel(line.text, kSending, rest)) {
            Finish();
            Begin(line, WithoutLogEscapes(rest));
        } else if (TakeLabel(line.text, kClear, rest)) {
            clear_ = WithoutLogEscapes(rest);
        } else if (TakeLabel(line.text, kRaw, rest)) {
            read_ = FromDump(line, rest);
            ++dialogue_.dumps;
        } else if (line.text.compare(0, sizeof(kReturning) - 1, kReturning) == 0) {
            returned_ = line.when;
        }
    }

    void Begin(const LogLine& line, const std::string& command) {
        open_ = true;
        sent_ = returned_ = line.when;
        in_loop_ = 0;
        exchange_ = {command, {}, lost_};
        source_ = {line.place, {}};
        source_.command.column += command.empty() ? 0 : sizeof(kSending) - 1;
        lost_ = false;
    }

    void Finish() {
        if (!open_) return;
        dialogue_.exchanges.push_back(exchange_);
        dialogue_.sources.push_back(source_);
        open_ = false;
    }

    // The log has a hole here: what was under way cannot be told.
    void Lose(Place place, const std::string& why) {
        dialogue_.notes.push_back(Format("line %zu: ", place.line) + why +
                                  "; one exchange left out");
        open_ = false;
        lost_ = true;
        read_.reset();
    }

    void TakeCount(const LogLine& line, std::size_t count) {
        if (!read_) {
            if (open_) Lose(line.place, "the bytes that were read are not in the log");
            return;
        }
        if (read_->bytes.size() != count) Complete(count);
        if (!read_->whole) {
            return Lose(line.place, Format("the log has %zu of the %zu bytes that were read",
                                           read_->bytes.size(), count));
        }
        AddRead(true);
    }

    // The same bytes stand in the line before, as text, which takes a third of the room.
    void Complete(std::size_t count) {
        const std::size_t known = read_->bytes.size();
        read_->whole =
            clear_.size() == count && known < count && clear_.compare(0, known, read_->bytes) == 0;
        if (!read_->whole) return;
        read_->bytes = clear_;
        read_->places.resize(count, read_->places.empty() ? Place() : read_->places.back());
    }

    void CommitRead() {
        if (!read_) return;
        if (read_->whole) return AddRead(false);
        Lose(read_->places.empty() ? source_.command : read_->places.back(),
             "the end of a dump was cut off");
    }

    void AddRead(bool counted) {
        if (open_) {
            exchange_.answer.push_back({DelayOf(*read_, counted), read_->bytes});
            source_.bytes.insert(source_.bytes.end(), read_->places.begin(), read_->places.end());
        }
        if (counted) ++in_loop_;
        read_.reset();
    }

    // From the carriage return until half a period before the daemon looked and found the bytes.
    // Stamps in whole seconds tell no more than how often it had looked; bytes that nobody counted
    // came after it had stopped looking.
    std::int64_t DelayOf(const Read& read, bool counted) const {
        if (read.exact) {
            return std::max(read.when - sent_ - kTerminatorPause - kReadPeriod / 2, kMillisecond);
        }
        const std::int64_t looking = in_loop_ * kReadPeriod + kReadPeriod / 2;
        if (counted) return looking;
        const std::int64_t waited = returned_ > sent_ ? returned_ - sent_ + kSecond : 0;
        return looking + kReadPeriod + waited;
    }

    Dialogue dialogue_;
    Exchange exchange_;
    Source source_;
    bool open_ = false;
    bool lost_ = false;
    std::int64_t sent_ = 0;
    std::int64_t returned_ = 0;  // when the daemon stopped looking
    std::int64_t in_loop_ = 0;   // times that it looked and found something
    std::string clear_;
    std::optional<Read> read_;
};

}  // namespace

Dialogue ReadDialogue(const std::vector<LogLine>& lines) {
    return Walk().Take(lines);
}

}  // namespace capture

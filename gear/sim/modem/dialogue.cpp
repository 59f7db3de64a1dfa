#include "sim/modem/dialogue.h"

#include <utility>

namespace sim {

namespace {

constexpr char kCtrlZ = '\x1a';
constexpr char kEscape = '\x1b';
constexpr char kBackspace = '\b';

// Behind this many characters a line or body keeps only its start, as a modem's buffer does.
constexpr std::size_t kLongestText = 2048;

constexpr std::pair<int, const char*> kCmeTexts[] = {
    {3, "operation not allowed"},
    {4, "operation not supported"},
    {10, "SIM not inserted"},
    {11, "SIM PIN required"},
    {14, "SIM busy"},
    {30, "no network service"},
    {50, "incorrect parameters"},
    {100, "unknown"},
};

const char* CmeText(int code) {
    for (const auto& [known, text] : kCmeTexts) {
        if (known == code) return text;
    }
    return "unknown";
}

std::string ResultText(const std::string& result, const Modes& modes) {
    constexpr std::string_view kCme = "+CME ERROR: ";
    if (!StartsWith(result, kCme)) return result;
    const auto code = ParseInt(std::string_view(result).substr(kCme.size()));
    if (modes.cmee == 0 || !code) return modes.cmee == 0 ? "ERROR" : result;
    return modes.cmee == 1 ? result : std::string(kCme) + CmeText(*code);
}

}  // namespace

Reply Ok() {
    return {};
}

Reply Info(std::string lines) {
    Reply reply;
    reply.info = std::move(lines);
    return reply;
}

Reply Error() {
    Reply reply;
    reply.result = "ERROR";
    return reply;
}

Reply CmeError(int code) {
    Reply reply;
    reply.result = "+CME ERROR: " + std::to_string(code);
    return reply;
}

Reply CmsError(int code) {
    Reply reply;
    reply.result = "+CMS ERROR: " + std::to_string(code);
    return reply;
}

std::string Frame(const Reply& reply, const Modes& modes) {
    if (reply.raw) return reply.info;
    if (reply.prompt) return "\r\n> ";
    std::string bytes;
    if (!reply.info.empty()) bytes = "\r\n" + reply.info + "\r\n";
    if (reply.result.empty()) return bytes;
    if (!reply.tight) bytes += "\r\n";
    return bytes + ResultText(reply.result, modes) + "\r\n";
}

std::string FrameUnsolicited(std::string_view line) {
    return "\r\n" + std::string(line) + "\r\n";
}

LineReader::Event LineReader::Take(char byte, std::string* echo) {
    if (complete_) {
        text_.clear();
        complete_ = false;
    }
    if (byte == '\0') return Event::kNothing;
    const bool line_feed_of_pair = after_cr_ && byte == '\n';
    after_cr_ = byte == '\r';
    if (line_feed_of_pair) return Event::kNothing;
    return in_body_ ? TakeForBody(byte, echo) : TakeForLine(byte, echo);
}

void LineReader::ExpectBody() {
    in_body_ = true;
    text_.clear();
    complete_ = false;
}

void LineReader::Reset() {
    *this = LineReader();
}

LineReader::Event LineReader::TakeForLine(char byte, std::string* echo) {
    switch (byte) {
        case '\r':
            *echo += byte;
            complete_ = true;
            return Event::kLine;
        case '\n':
        case kCtrlZ:
        case kEscape:
            return Event::kNothing;
        case kBackspace:
            if (!text_.empty()) text_.pop_back();
            *echo += "\b \b";
            return Event::kNothing;
        default:
            *echo += byte;
            if (text_.size() < kLongestText) text_ += byte;
            return Event::kNothing;
    }
}

LineReader::Event LineReader::TakeForBody(char byte, std::string* echo) {
    switch (byte) {
        case kCtrlZ:
        case kEscape:
            in_body_ = false;
            complete_ = true;
            return byte == kCtrlZ ? Event::kBody : Event::kCancelled;
        case kBackspace:
            if (!text_.empty()) text_.pop_back();
            *echo += "\b \b";
            return Event::kNothing;
        case '\r':
            *echo += "\r\n> ";
            if (text_.size() < kLongestText) text_ += '\n';
            return Event::kNothing;
        default:
            *echo += byte;
            if (text_.size() < kLongestText) text_ += byte;
            return Event::kNothing;
    }
}

}  // namespace sim

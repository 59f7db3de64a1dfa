#include "modemctl/log_lines.h"

#include <cstdlib>
#include <cstring>

#include "support/text.h"

namespace modemctl {

namespace {

// The fixed pieces of a format, cut at each conversion; always one more than conversions.
std::vector<std::string> FixedPieces(const char* format) {
    std::vector<std::string> pieces(1);
    for (const char* at = format; *at != '\0'; ++at) {
        if (*at != '%') {
            pieces.back() += *at;
        } else if (at[1] == '%') {
            pieces.back() += '%';
            ++at;
        } else {
            at += std::strspn(at + 1, "0123456789.-l") + 1;
            if (*at == '\0') break;
            pieces.emplace_back();
        }
    }
    return pieces;
}

// Leftmost for all pieces but the last, which has to end the text.
bool MatchesPieces(const std::vector<std::string>& pieces, const std::string& text,
                   std::vector<std::string>& parts) {
    parts.clear();
    const std::string& first = pieces.front();
    if (text.compare(0, first.size(), first) != 0) return false;
    std::size_t at = first.size();
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        const std::string& piece = pieces[i];
        const bool last = i + 1 == pieces.size();
        std::size_t found = text.find(piece, at);
        if (last) {
            if (text.size() < at + piece.size()) return false;
            found = text.size() - piece.size();
            if (text.compare(found, piece.size(), piece) != 0) return false;
        }
        if (found == std::string::npos) return false;
        parts.push_back(text.substr(at, found - at));
        at = found + piece.size();
    }
    return at == text.size();
}

std::size_t FixedLength(const std::vector<std::string>& pieces) {
    std::size_t length = 0;
    for (const std::string& piece : pieces) length += piece.size();
    return length;
}

}  // namespace

bool MatchesFormat(const char* format, const std::string& text, std::vector<std::string>& parts) {
    return MatchesPieces(FixedPieces(format), text, parts);
}

LogMatch MatchLogLine(const std::string& text) {
    static const std::vector<std::vector<std::string>> all_pieces = [] {
        std::vector<std::vector<std::string>> all;
        for (const LogLine& line : AllLogLines()) all.push_back(FixedPieces(line.format));
        return all;
    }();
    LogMatch best;
    std::size_t longest = 0;
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < all_pieces.size(); ++i) {
        if (!MatchesPieces(all_pieces[i], text, parts)) continue;
        const std::size_t length = FixedLength(all_pieces[i]);
        if (best.line != nullptr && length <= longest) continue;
        longest = length;
        best.line = &AllLogLines()[i];
        best.parts = parts;
    }
    return best;
}

std::string LogMatch::Fill(const char* words) const {
    std::string text;
    for (const char* at = words; *at != '\0'; ++at) {
        const bool place = at[0] == '{' && at[1] >= '1' && at[1] <= '9' && at[2] == '}';
        if (!place) {
            text += *at;
            continue;
        }
        const auto number = static_cast<std::size_t>(at[1] - '1');
        if (number < parts.size()) text += parts[number];
        at += 2;
    }
    return text;
}

const char* TopicWord(LogTopic topic) {
    constexpr const char* kWords[] = {"daemon", "port",  "modem",  "service", "call",
                                      "link",   "clock", "config", "sms",     "debug"};
    return kWords[static_cast<std::size_t>(topic)];
}

const char* LevelWord(LogLevel level) {
    constexpr const char* kWords[] = {"detail", "news", "good", "warning", "bad"};
    return kWords[static_cast<std::size_t>(level)];
}

}  // namespace modemctl

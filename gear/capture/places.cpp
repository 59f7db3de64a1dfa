#include "capture/places.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "support/text.h"

namespace capture {

namespace {

using modemctl::Personal;

constexpr std::size_t kLongestLine = 500;        // no line with a form is longer
constexpr std::size_t kLongestHarmlessWord = 2;  // letters
constexpr std::size_t kLongestHarmlessNumber = 4;
constexpr char kEndOfBody = '\x1a';

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || (c & 0x80) != 0;
}

bool IsHarmlessWord(const std::string& word) {
    const bool number = std::all_of(word.begin(), word.end(), IsDigit);
    return word.size() <= (number ? kLongestHarmlessNumber : kLongestHarmlessWord);
}

bool AsksForBody(const std::string& command) {
    return command.compare(0, 8, "AT+CMGS=") == 0 || command.compare(0, 8, "AT+CMGW=") == 0;
}

Personal PersonalOf(Held held) {
    switch (held) {
        case Held::kSerial:
            return Personal::kSerial;
        case Held::kSimCard:
            return Personal::kSimCard;
        case Held::kSubscriber:
            return Personal::kSubscriber;
        case Held::kNumber:
            return Personal::kNumber;
        case Held::kApn:
            return Personal::kApn;
        default:
            return Personal::kText;
    }
}

bool IsFinalResult(const std::string& line) {
    return line == "OK" || line == "ERROR" || line.compare(0, 5, "+CMS ") == 0;
}

// Where the line that begins at `at` ends: in front of its CR, LF, or the text's end.
std::size_t LineEnd(const std::string& text, std::size_t at) {
    return std::min(text.find_first_of("\r\n", at), text.size());
}

// Where the line stands in the command, whole: a modem may echo what it hears, and a message has
// several lines.
std::optional<std::size_t> LineIn(const std::string& command, const std::string& line) {
    for (std::size_t at = 0; at < command.size();) {
        const std::size_t end = std::min(command.find_first_of("\r\n\x1a", at), command.size());
        if (end > at && command.compare(at, end - at, line) == 0) return at;
        at = end + 1;
    }
    return std::nullopt;
}

}  // namespace

struct Placer::Piece {
    std::string command;
    const Place* places;  // of the line's first byte and those behind it; null: one place for all
    Place place;
    Place At(std::size_t i) const {
        return places != nullptr ? places[i] : Place{place.line, place.column + i};
    }
};

Placer::Placer(const modemctl::Anonymizer::Key& key, std::set<std::string> harmless)
    : anonymizer_(key), harmless_(std::move(harmless)), network_(key[0] ^ key[1]) {}

std::vector<Unplaced> Placer::Replace(Dialogue& dialogue) {
    unplaced_.clear();
    body_follows_ = false;
    for (std::size_t i = 0; i < dialogue.exchanges.size(); ++i) {
        Exchange& exchange = dialogue.exchanges[i];
        const std::string command = exchange.command;
        ReplaceCommand(exchange, dialogue.sources[i].command);
        ReplaceAnswer(exchange, dialogue.sources[i], command);
        body_follows_ = AsksForBody(command) && !Contains(exchange.Text(), "ERROR");
    }
    return unplaced_;
}

void Placer::ReplaceCommand(Exchange& exchange, const Place& place) {
    const std::string original = exchange.command;
    if (original.empty()) return;
    if (body_follows_ || original.back() == kEndOfBody) {
        exchange.command = ReplaceBody(original);
        return;
    }
    std::string upper = original;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    for (const LineForm& form : CommandForms()) {
        std::smatch match;
        const std::string& compared = form.holds.empty() ? upper : original;
        if (compared.size() > kLongestLine || !std::regex_match(compared, match, form.line))
            continue;
        exchange.command = ReplaceGroups(form, original, match);
        return;
    }
    CheckHarmless(original, {original, nullptr, place});
}

// The daemon doubles the last character of a send file, and so does what stands in its place.
std::string Placer::ReplaceBody(const std::string& body) {
    std::string text = body;
    const bool ended = text.back() == kEndOfBody;
    if (ended) text.pop_back();
    const bool doubled = text.size() > 1 && text[text.size() - 1] == text[text.size() - 2];
    text = ReplaceValue(Held::kText, text);
    if (doubled) text[text.size() - 1] = text[text.size() - 2];
    if (ended) text += kEndOfBody;
    return text;
}

// Line by line over all that was said, however it was cut into pieces on its way.
void Placer::ReplaceAnswer(Exchange& exchange, const Source& source, const std::string& command) {
    std::string text = exchange.Text();
    message_lines_ = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = LineEnd(text, at);
        if (end == at) {
            ++at;
            continue;
        }
        const std::string line = text.substr(at, end - at);
        Piece piece = {command, &source.bytes[at], {}};
        const auto echo = LineIn(command, line);
        const std::string replaced =
            echo ? exchange.command.substr(*echo, line.size()) : ReplaceLine(line, piece);
        if (replaced.size() != line.size()) {
            unplaced_.push_back({piece.At(0), line, command});
            return;
        }
        text.replace(at, line.size(), replaced);
        at = end;
    }
    std::size_t at = 0;
    for (Saying& saying : exchange.answer) {
        saying.bytes = text.substr(at, saying.bytes.size());
        at += saying.bytes.size();
    }
}

std::string Placer::ReplaceLine(const std::string& line, const Piece& piece) {
    for (const LineForm& form : AnswerForms()) {
        // A message may look like anything; only the next one and the result end it.
        const bool counts = message_lines_ == 0 || form.text_lines > 0 || IsFinalResult(line);
        std::smatch match;
        if (!counts || line.size() > kLongestLine || !std::regex_match(line, match, form.line) ||
            !std::regex_match(piece.command, form.command)) {
            continue;
        }
        message_lines_ = form.text_lines;
        return ReplaceGroups(form, line, match);
    }
    if (message_lines_ > 0) {
        --message_lines_;
        return ReplaceValue(Held::kText, line);
    }
    CheckHarmless(line, piece);
    return line;
}

// From the back, so that the places in front stay where they are.
std::string Placer::ReplaceGroups(const LineForm& form, const std::string& line,
                                  const std::smatch& match) {
    std::string result = line;
    for (std::size_t i = form.holds.size(); i > 0; --i) {
        if (!match[i].matched) continue;
        result.replace(static_cast<std::size_t>(match.position(i)), match[i].str().size(),
                       ReplaceValue(form.holds[i - 1], match[i]));
    }
    return result;
}

std::string Placer::ReplaceValue(Held held, const std::string& value) {
    if (harmless_.count(value) != 0) return value;
    switch (held) {
        case Held::kHexCell:
            return network_.ReplaceCell(value, 16);
        case Held::kDecimalCell:
            return network_.ReplaceCell(value, 10);
        case Held::kAddress:
            return network_.ReplaceAddress(value);
        default:
            return anonymizer_.Replace(PersonalOf(held), value);
    }
}

// No form fits. Marks, short words and short numbers cannot be anybody's.
void Placer::CheckHarmless(const std::string& line, const Piece& piece) {
    for (std::size_t at = 0; at < line.size();) {
        std::size_t end = at;
        while (end < line.size() && IsWordCharacter(line[end])) ++end;
        const std::string word = line.substr(at, end - at);
        if (!word.empty() && !IsHarmlessWord(word) && harmless_.count(word) == 0) {
            unplaced_.push_back({piece.At(at), word, piece.command});
        }
        at = std::max(end, at + 1);
    }
}

}  // namespace capture

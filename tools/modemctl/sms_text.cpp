#include "modemctl/sms_text.h"

#include <algorithm>
#include <iterator>

#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kMostPieces = 99;
constexpr std::size_t kShortestNumber = 2;  // digits
constexpr std::size_t kLongestNumber = 15;
// A piece may end so many bytes early for a whole word.
constexpr std::size_t kMostLostForWord = 20;
constexpr char kUnshownBlank = ' ';

struct Substitute {
    std::uint32_t code_point;
    const char* text;
};

// Ascending. What a typographer or a neighbour's keyboard puts into a text.
constexpr Substitute kSubstitutes[] = {
    {0x09, " "},    {0x0d, ""},     {0xa0, " "},   {0xa3, "GBP"},   {0xa9, "(c)"},   {0xab, "<<"},
    {0xb0, "deg"},  {0xb1, "+-"},   {0xb2, "2"},   {0xb3, "3"},     {0xb5, "u"},     {0xb7, "."},
    {0xbb, ">>"},   {0xbd, "1/2"},  {0xc0, "A"},   {0xc1, "A"},     {0xc2, "A"},     {0xc3, "A"},
    {0xc4, "Ae"},   {0xc5, "A"},    {0xc6, "AE"},  {0xc7, "C"},     {0xc8, "E"},     {0xc9, "E"},
    {0xca, "E"},    {0xcb, "E"},    {0xcc, "I"},   {0xcd, "I"},     {0xce, "I"},     {0xcf, "I"},
    {0xd1, "N"},    {0xd2, "O"},    {0xd3, "O"},   {0xd4, "O"},     {0xd5, "O"},     {0xd6, "Oe"},
    {0xd7, "x"},    {0xd8, "O"},    {0xd9, "U"},   {0xda, "U"},     {0xdb, "U"},     {0xdc, "Ue"},
    {0xdd, "Y"},    {0xdf, "ss"},   {0xe0, "a"},   {0xe1, "a"},     {0xe2, "a"},     {0xe3, "a"},
    {0xe4, "ae"},   {0xe5, "a"},    {0xe6, "ae"},  {0xe7, "c"},     {0xe8, "e"},     {0xe9, "e"},
    {0xea, "e"},    {0xeb, "e"},    {0xec, "i"},   {0xed, "i"},     {0xee, "i"},     {0xef, "i"},
    {0xf1, "n"},    {0xf2, "o"},    {0xf3, "o"},   {0xf4, "o"},     {0xf5, "o"},     {0xf6, "oe"},
    {0xf8, "o"},    {0xf9, "u"},    {0xfa, "u"},   {0xfb, "u"},     {0xfc, "ue"},    {0xfd, "y"},
    {0xff, "y"},    {0x2013, "-"},  {0x2014, "-"}, {0x2018, "'"},   {0x2019, "'"},   {0x201c, "\""},
    {0x201d, "\""}, {0x201e, "\""}, {0x2022, "*"}, {0x2026, "..."}, {0x20ac, "EUR"}, {0x2192, "->"},
};

std::string SubstituteFor(std::uint32_t code_point) {
    const Substitute* const row =
        std::lower_bound(std::begin(kSubstitutes), std::end(kSubstitutes), code_point,
                         [](const Substitute& a, std::uint32_t b) { return a.code_point < b; });
    return row != std::end(kSubstitutes) && row->code_point == code_point ? row->text : "?";
}

bool IsCarried(const CodePoint& point) {
    return point.valid && (point.value == '\n' || (point.value >= ' ' && point.value <= '~'));
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Where a piece that may be `room` bytes long ends: behind a blank or a line end, if there is one
// near the end.
std::size_t PieceLength(const std::string& rest, std::size_t room) {
    if (rest.size() <= room) return rest.size();
    const std::size_t blank = rest.find_last_of(" \n", room - 1);
    return blank != std::string::npos && blank + 1 + kMostLostForWord >= room ? blank + 1 : room;
}

std::vector<SmsPiece> SplitInto(const std::string& text, std::size_t count) {
    std::vector<SmsPiece> pieces;
    std::string rest = text;
    while (!rest.empty() && pieces.size() < kMostPieces) {
        const std::string head =
            Format("(%d/%d) ", static_cast<int>(pieces.size() + 1), static_cast<int>(count));
        const std::size_t length = PieceLength(rest, kLongestOnAir - head.size());
        pieces.push_back(Compensated(head + rest.substr(0, length)));
        rest.erase(0, length);
    }
    return rest.empty() ? pieces : std::vector<SmsPiece>();
}

}  // namespace

std::string OnAir(const std::string& file_text) {
    if (file_text.empty()) return "=";  // then the last character of the file is that of "MSG="
    return (file_text + file_text.back()).substr(0, kLongestOnAir);
}

SmsPiece Compensated(const std::string& text) {
    SmsPiece piece;
    piece.text = text;
    piece.file_text = text;
    const std::size_t size = text.size();
    const bool ends_twice = size >= 2 && text[size - 1] == text[size - 2];
    if (size < kLongestOnAir && ends_twice) {
        piece.file_text.pop_back();
    } else if (size > 0 && size < kLongestOnAir && text.back() != kUnshownBlank &&
               text.back() != '\n') {
        piece.file_text += kUnshownBlank;
    }
    piece.on_air = OnAir(piece.file_text);
    return piece;
}

std::vector<SmsPiece> SplitText(const std::string& text) {
    if (text.size() <= kLongestOnAir) return {Compensated(text)};
    // How many pieces there are decides how long their heads are, and that how many there are.
    std::vector<SmsPiece> pieces = SplitInto(text, 9);
    if (pieces.size() > 9) pieces = SplitInto(text, kMostPieces);
    if (pieces.empty()) return pieces;
    return SplitInto(text, pieces.size());
}

std::vector<BadCharacter> FindBadCharacters(const std::string& text) {
    std::vector<BadCharacter> bad;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = DecodeAt(text, at);
        if (!IsCarried(point)) {
            bad.push_back({at, text.substr(at, point.length),
                           point.valid ? SubstituteFor(point.value) : "?"});
        }
        at += point.length;
    }
    return bad;
}

std::string WithSubstitutes(const std::string& text, const std::vector<BadCharacter>& bad) {
    std::string result;
    std::size_t done = 0;
    for (const BadCharacter& character : bad) {
        result += text.substr(done, character.at - done) + character.substitute;
        done = character.at + character.text.size();
    }
    return result + text.substr(done);
}

std::string DoubtfulCharacters(const std::string& text) {
    std::string doubtful;
    for (const char c : std::string("@$_[\\]^`{|}~")) {
        if (text.find(c) != std::string::npos) doubtful += c;
    }
    return doubtful;
}

bool LooksLikeFailure(const std::string& text) {
    return Contains(text, "+CMS ERROR: ");
}

bool CleanNumber(const std::string& typed, std::string& number) {
    number.clear();
    for (const char c : typed) {
        if (std::string(" -./()").find(c) != std::string::npos) continue;
        if (!IsDigit(c) && !(c == '+' && number.empty())) return false;
        number += c;
    }
    const std::size_t digits = number.size() - (number[0] == '+' ? 1 : 0);
    return digits >= kShortestNumber && digits <= kLongestNumber;
}

}  // namespace modemctl

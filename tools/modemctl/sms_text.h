// What a text becomes on its way through the daemon, and how to write it so that the receiver sees
// it as it was typed.
//
// The daemon repeats the last character of a send file and sends the first 150 bytes. A text of
// exactly 150 bytes loses the repeated one to the cut, and one that ends in the same character
// twice can be written with one of them. Any other text ends in one or two blanks too many, which
// no telephone shows.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace modemctl {

constexpr std::size_t kLongestOnAir = 150;  // bytes

// The bytes that the modem is given for what stands behind "MSG=" in a send file.
std::string OnAir(const std::string& file_text);

// One message: what to write behind "MSG=", and what goes on air then.
struct SmsPiece {
    std::string text;       // as the receiver shall see it
    std::string file_text;  // as it is written
    std::string on_air;

    bool IsExact() const { return on_air == text; }
};
SmsPiece Compensated(const std::string& text);

// A text that does not fit is cut at blanks where that costs little, and each piece begins with its
// number: "(1/3) ". Empty when it would take more than 99.
std::vector<SmsPiece> SplitText(const std::string& text);

// A character that the daemon's text mode cannot carry.
struct BadCharacter {
    std::size_t at = 0;  // byte
    std::string text;    // its bytes
    std::string substitute;
};
// Control characters but the line feed, and whatever is not ASCII. To the modem, Ctrl-Z ends the
// message early and ESC throws it away.
std::vector<BadCharacter> FindBadCharacters(const std::string& text);
std::string WithSubstitutes(const std::string& text, const std::vector<BadCharacter>& bad);

// Those characters of the text that arrive as others when the modem takes the text for the
// telephone alphabet instead of ASCII; each once.
std::string DoubtfulCharacters(const std::string& text);

// The modem's echo of such a text reads to the daemon as a failure: it would send it three times.
bool LooksLikeFailure(const std::string& text);

// Blanks, dashes, dots, slashes and parentheses are taken out. False unless the rest is one leading
// "+" at most and 2 to 15 digits.
bool CleanNumber(const std::string& typed, std::string& number);

}  // namespace modemctl

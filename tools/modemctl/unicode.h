// Text that came from a modem, a message or a file, made fit for a terminal or a JSON document.
// None of these is trusted: not the bytes, not the encoding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace modemctl {

struct CodePoint {
    std::uint32_t value;  // a byte that is no UTF-8 stands for itself
    std::size_t length;   // bytes taken
    bool valid;
};

// The code point at `at`, which must lie within the text. Overlong forms, surrogates and numbers
// above 10FFFF are no UTF-8: their first byte is taken alone.
CodePoint DecodeAt(const std::string& text, std::size_t at);
void AppendUtf8(std::string& text, std::uint32_t code_point);

// What a terminal may be given: control characters, invisible ones, those that turn the direction
// of writing, bytes that are no UTF-8 and the backslash as C would write them ("\x1b", "\n",
// "\u202e", "\\"). Without UTF-8, everything above 126 is written so, too.
//
// One lone byte is known: the daemon's own text of end reason 5 holds 0x96, a dash.
std::string Escaped(const std::string& foreign, bool utf8);

// Columns that an escaped text takes on a terminal.
std::size_t Columns(const std::string& text);
// Cut to so many columns, with a mark at the cut; filled with blanks by Padded.
std::string Cut(const std::string& text, std::size_t columns);
std::string Padded(const std::string& text, std::size_t columns);
// Broken at blanks into lines of at most so many columns; a longer word is broken where it must.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns);

// For JSON: quotes included, always UTF-8; bytes that are none become U+FFFD. Controls and
// invisible characters are written as \u escapes, since a document may be shown on a terminal, too.
std::string JsonString(const std::string& foreign);

}  // namespace modemctl

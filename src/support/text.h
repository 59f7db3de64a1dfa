// The text-cleaning room: everything that tidies, tests or converts a piece of modem text.
// The cleaners change their argument in place.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// printf into a string of whatever length it takes.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

void RemoveChar(std::string& text, char unwanted);
// Every CR, then every LF, anywhere in the text.
void StripLineEnds(std::string& text);
// Every blank, tab, CR and LF, anywhere in the text (so "my apn" becomes "myapn").
void CleanWhiteSpace(std::string& text);
// isspace characters at both ends, or at the start only.
void Trim(std::string& text);
void TrimLeft(std::string& text);
void ToLower(std::string& text);

inline bool Contains(std::string_view text, std::string_view wanted) {
    return text.find(wanted) != std::string_view::npos;
}

// Decimal digits only, except that the first character may be "-". The empty text and a lone "-"
// pass: nothing in them fails, and the callers rely on it.
bool IsInteger(const std::string& text);

// A text field that the modem has not filled yet: empty or "Unknown".
bool IsStillUnknown(const std::string& text);

// Leading decimal number of the text, 0 when there is none. A number that does not fit 64
// bits is cut to their limits first: the result is defined, and on every processor the same.
int ToInt(const std::string& text);

// The current local time through strftime; empty when it needs more than room - 1 characters.
// At most 64 characters of room.
std::string LocalTime(const char* strftime_format, std::size_t room = 64);

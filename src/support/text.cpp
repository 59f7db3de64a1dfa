// Small operations on text; none knows what the text means.

#include "support/text.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string Format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    return text;
}

void RemoveChar(std::string& text, char unwanted) {
    text.erase(std::remove(text.begin(), text.end(), unwanted), text.end());
}

void StripLineEnds(std::string& text) {
    RemoveChar(text, '\r');
    RemoveChar(text, '\n');
}

void CleanWhiteSpace(std::string& text) {
    RemoveChar(text, ' ');
    RemoveChar(text, '\t');
    StripLineEnds(text);
}

void TrimLeft(std::string& text) {
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), IsSpace));
}

void Trim(std::string& text) {
    TrimLeft(text);
    text.erase(std::find_if_not(text.rbegin(), text.rend(), IsSpace).base(), text.end());
}

void ToLower(std::string& text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Oddity empty-is-a-number: an empty level counts as 0 dBm, which is full signal.
bool IsInteger(const std::string& text) {
    const std::size_t first = !text.empty() && text[0] == '-' ? 1 : 0;
    return text.find_first_not_of("0123456789", first) == std::string::npos;
}

bool IsStillUnknown(const std::string& text) {
    return text.empty() || text == "Unknown";
}

int ToInt(const std::string& text) {
    return static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
}

std::string LocalTime(const char* strftime_format, std::size_t room) {
    const std::time_t now = std::time(nullptr);
    char text[64] = "";
    const std::tm* local = std::localtime(&now);
    if (local == nullptr) return "";
    const std::size_t length =
        std::strftime(text, std::min(room, sizeof(text)), strftime_format, local);
    return std::string(text, length);
}

#include "sim/modem/text.h"

#include <cctype>
#include <charconv>
#include <cstdarg>
#include <cstdio>

namespace sim {

namespace {

bool IsBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const int lower = std::tolower(static_cast<unsigned char>(c));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Appends what the escape at text[at] (just behind the backslash) stands for; returns how many
// characters it took.
std::size_t AppendEscaped(std::string_view text, std::size_t at, std::string& out) {
    switch (text[at]) {
        case 'r':
            out += '\r';
            return 1;
        case 'n':
            out += '\n';
            return 1;
        case 't':
            out += '\t';
            return 1;
        case 'e':
            out += '\x1b';
            return 1;
        case '"':
        case '\\':
            out += text[at];
            return 1;
        case 'x':
            if (at + 2 < text.size() && HexDigit(text[at + 1]) >= 0 &&
                HexDigit(text[at + 2]) >= 0) {
                out += static_cast<char>(HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2]));
                return 3;
            }
            break;
        default:
            break;
    }
    out += '\\';
    return 0;
}

}  // namespace

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

std::string Trim(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return std::string(text);
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string NormaliseCommand(std::string_view line) {
    std::string command = Trim(line);
    bool quoted = false;
    for (char& c : command) {
        if (c == '"') quoted = !quoted;
        if (!quoted) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return command;
}

std::vector<std::string> SplitOutsideQuotes(std::string_view text, char separator) {
    std::vector<std::string> parts(1);
    bool quoted = false;
    for (const char c : text) {
        if (c == '"') quoted = !quoted;
        if (c == separator && !quoted) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::vector<std::string> SplitParameters(std::string_view text) {
    std::vector<std::string> parts = SplitOutsideQuotes(text, ',');
    for (std::string& part : parts) {
        part = Trim(part);
        if (part.size() >= 2 && part.front() == '"' && part.back() == '"') {
            part = part.substr(1, part.size() - 2);
        }
    }
    return parts;
}

std::optional<std::vector<std::string>> SplitWords(std::string_view line) {
    std::vector<std::string> words;
    bool quoted = false;
    bool inside = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (!quoted && IsBlank(c)) {
            inside = false;
            continue;
        }
        if (!inside) words.emplace_back();
        inside = true;
        if (c == '"') {
            quoted = !quoted;
        } else if (c == '\\' && i + 1 < line.size()) {
            i += AppendEscaped(line, i + 1, words.back());
        } else {
            words.back() += c;
        }
    }
    if (quoted) return std::nullopt;
    return words;
}

std::string Unescape(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            i += AppendEscaped(text, i + 1, out);
        } else {
            out += text[i];
        }
    }
    return out;
}

std::optional<int> ParseInt(std::string_view text, int base) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<Micros> ParseDuration(std::string_view text) {
    struct Unit {
        std::string_view name;
        Micros length;
    };
    constexpr Unit kUnits[] = {{"", kSecond},       {"ms", kMillisecond},  {"s", kSecond},
                               {"m", 60 * kSecond}, {"h", 3600 * kSecond}, {"d", 86400 * kSecond}};
    constexpr Micros kLongest = 3660LL * 86400 * kSecond;

    Micros number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0) return std::nullopt;
    const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
    for (const Unit& known : kUnits) {
        if (unit != known.name) continue;
        if (number > kLongest / known.length) return std::nullopt;
        return number * known.length;
    }
    return std::nullopt;
}

std::string Print(const char* format, ...) {
    char buffer[1001];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

}  // namespace sim

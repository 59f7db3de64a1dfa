// One number for a table of texts that nobody may change by accident.
#pragma once

#include <cstdint>
#include <string>

// FNV-1a.
inline std::uint64_t Seal(const std::string& text, std::uint64_t seal = 0xcbf29ce484222325U) {
    for (const char c : text) seal = (seal ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return seal;
}

// Of the texts of 0 to `last`, each written as a number, a line each.
template <typename Text>
std::uint64_t SealOfLines(int last, Text text) {
    std::string lines;
    for (int code = 0; code <= last; ++code) lines += text(std::to_string(code)) + '\n';
    return Seal(lines);
}

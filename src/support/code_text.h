// Tables of numbers with a text each: results, error codes, states.
#pragma once

#include <cstddef>
#include <string>

struct CodeText {
    int code;
    const char* text;
};

// Null when the code has no text of its own.
template <std::size_t N>
const char* TextOfCode(const CodeText (&table)[N], int code) {
    for (const CodeText& row : table) {
        if (row.code == code) return row.text;
    }
    return nullptr;
}

// A code without a text of its own leaves `text` as it is.
template <std::size_t N>
void DescribeCode(const CodeText (&table)[N], int code, std::string& text) {
    if (const char* known = TextOfCode(table, code)) text = known;
}

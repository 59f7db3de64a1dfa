#include "modemctl/unicode.h"

#include <algorithm>
#include <cstring>

#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::uint32_t kReplacement = 0xfffd;
constexpr std::uint32_t kEnDash = 0x2013;
constexpr std::uint32_t kDashByte = 0x96;  // the dash of code page 1252

struct Range {
    std::uint32_t first, last;
};

// Unseen, or turning the direction of what follows: a name could look like another one.
constexpr Range kInvisible[] = {
    {0x00ad, 0x00ad}, {0x061c, 0x061c},   {0x115f, 0x1160}, {0x180e, 0x180e}, {0x200b, 0x200f},
    {0x2028, 0x202e}, {0x2060, 0x206f},   {0x3164, 0x3164}, {0xfe00, 0xfe0f}, {0xfeff, 0xfeff},
    {0xfff0, 0xfffb}, {0xe0000, 0xe0fff}, {0xfdd0, 0xfdef},
};

constexpr Range kDoubleWidth[] = {
    {0x1100, 0x115f}, {0x2e80, 0xa4cf}, {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe30, 0xfe6f},
    {0xff00, 0xff60}, {0xffe0, 0xffe6}, {0x1f300, 0x1faff}, {0x20000, 0x3fffd},
};

constexpr Range kNoWidth[] = {{0x0300, 0x036f}, {0x20d0, 0x20ff}, {0xfe20, 0xfe2f}};

template <std::size_t N>
bool IsIn(const Range (&ranges)[N], std::uint32_t value) {
    return std::any_of(ranges, ranges + N, [&](const Range& range) {
        return value >= range.first && value <= range.last;
    });
}

std::size_t LengthOfLead(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xc2 && lead < 0xe0) return 2;
    if (lead >= 0xe0 && lead < 0xf0) return 3;
    if (lead >= 0xf0 && lead < 0xf5) return 4;
    return 0;
}

std::string EscapedByte(unsigned value) {
    switch (value) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return Format("\\x%02x", value);
    }
}

std::string EscapedCode(const CodePoint& code) {
    if (!code.valid || code.value < 0x80) return EscapedByte(code.value);
    return Format(code.value > 0xffff ? "\\U%08x" : "\\u%04x", code.value);
}

bool IsControl(std::uint32_t value) {
    return value < 0x20 || (value >= 0x7f && value < 0xa0);
}

std::size_t ColumnsOf(const CodePoint& code) {
    if (IsIn(kNoWidth, code.value)) return 0;
    return IsIn(kDoubleWidth, code.value) ? 2 : 1;
}

// Above FFFF as two halves, which is how JSON writes it.
std::string JsonEscape(std::uint32_t value) {
    if (value < 0x10000) return Format("\\u%04x", value);
    const std::uint32_t rest = value - 0x10000;
    return Format("\\u%04x\\u%04x", 0xd800U + (rest >> 10U), 0xdc00U + (rest & 0x3ffU));
}

}  // namespace

CodePoint DecodeAt(const std::string& text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const CodePoint invalid = {lead, 1, false};
    const std::size_t length = LengthOfLead(lead);
    if (length == 1) return {lead, 1, true};
    if (length == 0 || at + length > text.size()) return invalid;
    std::uint32_t value = lead & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xc0U) != 0x80) return invalid;
        value = value << 6U | (next & 0x3fU);
    }
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xd800 && value <= 0xdfff;
    if (value < kLeast[length] || value > 0x10ffff || surrogate) return invalid;
    return {value, length, true};
}

void AppendUtf8(std::string& text, std::uint32_t code_point) {
    const auto add = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code_point < 0x80) {
        add(code_point);
    } else if (code_point < 0x800) {
        add(0xc0U | code_point >> 6U);
        add(0x80U | (code_point & 0x3fU));
    } else if (code_point < 0x10000) {
        add(0xe0U | code_point >> 12U);
        add(0x80U | (code_point >> 6U & 0x3fU));
        add(0x80U | (code_point & 0x3fU));
    } else {
        add(0xf0U | code_point >> 18U);
        add(0x80U | (code_point >> 12U & 0x3fU));
        add(0x80U | (code_point >> 6U & 0x3fU));
        add(0x80U | (code_point & 0x3fU));
    }
}

std::string Escaped(const std::string& foreign, bool utf8) {
    std::string shown;
    for (std::size_t at = 0; at < foreign.size();) {
        const CodePoint code = DecodeAt(foreign, at);
        if (!code.valid && code.value == kDashByte) {
            shown += utf8 ? "\xe2\x80\x93" : "-";
        } else if (code.value == '\\') {
            shown += "\\\\";
        } else if (!code.valid || IsControl(code.value) || IsIn(kInvisible, code.value) ||
                   (!utf8 && code.value > 0x7e)) {
            shown += EscapedCode(code);
        } else {
            shown.append(foreign, at, code.length);
        }
        at += code.length;
    }
    return shown;
}

std::size_t Columns(const std::string& text) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint code = DecodeAt(text, at);
        columns += ColumnsOf(code);
        at += code.length;
    }
    return columns;
}

std::string Cut(const std::string& text, std::size_t columns) {
    if (Columns(text) <= columns) return text;
    constexpr char kMark[] = "..";
    constexpr std::size_t kMarkColumns = 2;
    if (columns <= kMarkColumns) return std::string(kMark, columns);
    std::size_t taken = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const CodePoint code = DecodeAt(text, at);
        if (taken + ColumnsOf(code) > columns - kMarkColumns) break;
        taken += ColumnsOf(code);
        at += code.length;
    }
    return text.substr(0, at) + kMark;
}

std::string Padded(const std::string& text, std::size_t columns) {
    const std::size_t taken = Columns(text);
    return taken >= columns ? text : text + std::string(columns - taken, ' ');
}

std::vector<std::string> Wrapped(const std::string& text, std::size_t columns) {
    std::vector<std::string> lines(1);
    std::size_t taken = 0;
    const auto new_line = [&] {
        lines.emplace_back();
        taken = 0;
    };
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find(' ', at);
        if (end == std::string::npos) end = text.size();
        const std::string word = text.substr(at, end - at);
        if (taken > 0 && taken + 1 + Columns(word) > columns) new_line();
        if (taken > 0) lines.back() += ' ';
        taken += (taken > 0 ? 1 : 0);
        for (std::size_t i = 0; i < word.size();) {
            const CodePoint code = DecodeAt(word, i);
            if (taken + ColumnsOf(code) > columns && taken > 0) new_line();
            lines.back().append(word, i, code.length);
            taken += ColumnsOf(code);
            i += code.length;
        }
        at = end + 1;
    }
    return lines;
}

std::string JsonString(const std::string& foreign) {
    std::string quoted = "\"";
    for (std::size_t at = 0; at < foreign.size();) {
        const CodePoint code = DecodeAt(foreign, at);
        if (!code.valid) {
            AppendUtf8(quoted, code.value == kDashByte ? kEnDash : kReplacement);
        } else if (code.value == '"' || code.value == '\\') {
            quoted += '\\';
            quoted += static_cast<char>(code.value);
        } else if (IsControl(code.value) || IsIn(kInvisible, code.value)) {
            quoted += JsonEscape(code.value);
        } else {
            quoted.append(foreign, at, code.length);
        }
        at += code.length;
    }
    return quoted + "\"";
}

}  // namespace modemctl

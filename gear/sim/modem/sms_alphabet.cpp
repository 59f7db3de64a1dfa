#include "sim/modem/sms_alphabet.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <utility>

namespace sim {

namespace {

constexpr unsigned char kEscape = 0x1B;

// By their codes; 0x1B is the escape to the second table.
constexpr char16_t kAlphabet[] =
    u"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\u00A0ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    u"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
constexpr std::pair<unsigned char, char16_t> kEscaped[] = {
    {0x0A, u'\f'}, {0x14, u'^'}, {0x28, u'{'}, {0x29, u'}'}, {0x2F, u'\\'},
    {0x3C, u'['},  {0x3D, u'~'}, {0x3E, u']'}, {0x40, u'|'}, {0x65, u'€'},
};
static_assert(std::size(kAlphabet) == 128 + 1, "a code for each of seven bits");

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The character that begins at text[*at], which moves behind it.
std::uint32_t NextCharacter(std::string_view text, std::size_t* at) {
    const auto first = static_cast<unsigned char>(text[(*at)++]);
    const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    const std::string_view rest = text.substr(*at, more);
    if (more == 0 || first >= 0xF8 || rest.size() < more ||
        !std::all_of(rest.begin(), rest.end(), IsContinuation)) {
        return first;
    }
    std::uint32_t character = first & (0x3Fu >> more);
    for (const char c : rest) character = character << 6 | (static_cast<unsigned char>(c) & 0x3Fu);
    *at += more;
    return character;
}

void AppendCharacter(std::uint32_t character, std::string* text) {
    const auto append = [text](std::uint32_t byte) { *text += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

int HexValue(char c) {
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return -1;
    return c <= '9' ? c - '0' : std::toupper(static_cast<unsigned char>(c)) - 'A' + 10;
}

}  // namespace

bool ToSeptets(std::string_view text, std::vector<unsigned char>* septets) {
    septets->clear();
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t character = NextCharacter(text, &at);
        const auto* const end = std::prev(std::end(kAlphabet));
        const auto* const plain = std::find(std::begin(kAlphabet), end, character);
        if (plain != end && plain - kAlphabet != kEscape) {
            septets->push_back(static_cast<unsigned char>(plain - kAlphabet));
            continue;
        }
        const auto* const escaped =
            std::find_if(std::begin(kEscaped), std::end(kEscaped),
                         [&](const auto& row) { return row.second == character; });
        if (escaped == std::end(kEscaped)) return false;
        septets->push_back(kEscape);
        septets->push_back(escaped->first);
    }
    return true;
}

std::string FromSeptets(const std::vector<unsigned char>& septets) {
    std::string text;
    bool behind_escape = false;
    for (const unsigned char septet : septets) {
        if (!behind_escape && septet == kEscape) {
            behind_escape = true;
            continue;
        }
        const auto* const escaped =
            std::find_if(std::begin(kEscaped), std::end(kEscaped),
                         [&](const auto& row) { return row.first == septet; });
        const bool is_escaped = behind_escape && escaped != std::end(kEscaped);
        AppendCharacter(is_escaped ? escaped->second : kAlphabet[septet & 0x7F], &text);
        behind_escape = false;
    }
    return text;
}

Octets Pack(const std::vector<unsigned char>& septets) {
    Octets octets((septets.size() * 7 + 7) / 8);
    for (std::size_t i = 0; i < septets.size(); ++i) {
        const std::size_t bit = i * 7;
        const unsigned spread = static_cast<unsigned>(septets[i]) << bit % 8;
        octets[bit / 8] = static_cast<unsigned char>(octets[bit / 8] | (spread & 0xFF));
        if (spread > 0xFF) octets[bit / 8 + 1] = static_cast<unsigned char>(spread >> 8);
    }
    return octets;
}

std::vector<unsigned char> Unpack(const Octets& octets, std::size_t fill, std::size_t count) {
    std::vector<unsigned char> septets;
    for (std::size_t i = fill; i < count; ++i) {
        const std::size_t bit = i * 7;
        if (bit / 8 >= octets.size()) break;
        unsigned pair = octets[bit / 8];
        if (bit / 8 + 1 < octets.size()) pair |= static_cast<unsigned>(octets[bit / 8 + 1]) << 8;
        septets.push_back(static_cast<unsigned char>(pair >> bit % 8 & 0x7F));
    }
    return septets;
}

Octets ToUcs2(std::string_view text) {
    Octets octets;
    const auto append = [&octets](std::uint32_t unit) {
        octets.push_back(static_cast<unsigned char>(unit >> 8));
        octets.push_back(static_cast<unsigned char>(unit & 0xFF));
    };
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t character = NextCharacter(text, &at);
        if (character < 0x10000) {
            append(character);
        } else {
            append(0xD800 | (character - 0x10000) >> 10);
            append(0xDC00 | ((character - 0x10000) & 0x3FF));
        }
    }
    return octets;
}

std::string FromUcs2(const Octets& octets) {
    std::string text;
    std::uint32_t high = 0;  // the first half of a pair
    for (std::size_t i = 0; i + 1 < octets.size(); i += 2) {
        const std::uint32_t unit = static_cast<std::uint32_t>(octets[i]) << 8 | octets[i + 1];
        if (unit >= 0xD800 && unit < 0xDC00) {
            high = unit;
        } else if (unit >= 0xDC00 && unit < 0xE000 && high != 0) {
            AppendCharacter(0x10000 + ((high & 0x3FF) << 10 | (unit & 0x3FF)), &text);
            high = 0;
        } else {
            AppendCharacter(unit, &text);
        }
    }
    return text;
}

std::string ToHex(const Octets& octets) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char octet : octets) {
        text += kDigits[octet >> 4];
        text += kDigits[octet & 0xF];
    }
    return text;
}

bool FromHex(std::string_view text, Octets* octets) {
    octets->clear();
    if (text.size() % 2 != 0) return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = HexValue(text[i]);
        const int low = HexValue(text[i + 1]);
        if (high < 0 || low < 0) return false;
        octets->push_back(static_cast<unsigned char>(high * 16 + low));
    }
    return true;
}

}  // namespace sim

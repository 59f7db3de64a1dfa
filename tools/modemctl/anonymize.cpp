#include "modemctl/anonymize.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>

#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kShortestSecret = 5;  // shorter ones stand everywhere
constexpr std::size_t kShortestLeak = 8;    // shorter ones come about by chance
constexpr int kMostTries = 50;
constexpr std::size_t kKeptOfSubscriber = 5;  // country and network
constexpr std::size_t kLongHex = 12;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsAlphanumeric(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool IsHex(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
}

std::uint64_t Rotated(std::uint64_t x, unsigned bits) {
    return (x << bits) | (x >> (64 - bits));
}

struct SipState {
    std::uint64_t a, b, c, d;

    void Round() {
        a += b;
        b = Rotated(b, 13) ^ a;
        a = Rotated(a, 32);
        c += d;
        d = Rotated(d, 16) ^ c;
        a += d;
        d = Rotated(d, 21) ^ a;
        c += b;
        b = Rotated(b, 17) ^ c;
        c = Rotated(c, 32);
    }
};

// The check digit that makes the number right: every second digit from the right is doubled.
char CheckDigit(const std::string& digits) {
    int sum = 0;
    bool doubled = true;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, doubled = !doubled) {
        const int value = (*digit - '0') * (doubled ? 2 : 1);
        sum += value > 9 ? value - 9 : value;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

bool HasRightCheckDigit(const std::string& digits) {
    return digits.size() > 1 && std::all_of(digits.begin(), digits.end(), IsDigit) &&
           CheckDigit(digits.substr(0, digits.size() - 1)) == digits.back();
}

std::size_t KeptOf(Personal kind, const std::string& core) {
    if (kind == Personal::kSimCard && core.compare(0, 2, "89") == 0) return 2;
    if (kind == Personal::kSubscriber) return std::min(kKeptOfSubscriber, core.size());
    return 0;
}

std::string Lower(std::string text) {
    ToLower(text);
    return text;
}

// The letters of `text` as large as those of `shape`.
std::string WithCaseOf(const std::string& shape, std::string text) {
    for (std::size_t i = 0; i < text.size() && i < shape.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (std::isupper(static_cast<unsigned char>(shape[i])) != 0) {
            text[i] = static_cast<char>(std::toupper(c));
        }
    }
    return text;
}

// Another character that takes as many bytes; a byte that is no UTF-8 tells nothing and stays.
void AppendForeign(std::string& text, const std::string& original, const CodePoint& point,
                   std::size_t at) {
    constexpr std::uint32_t kStandIns[] = {'?', '?', 0xe4, 0x20ac, 0x1f4f7};
    if (point.valid && point.length <= 4) {
        AppendUtf8(text, kStandIns[point.length]);
    } else {
        text += original.substr(at, point.length);
    }
}

// An IPv4 address at the start of the text; its length, 0 when there is none.
std::size_t ScanIpv4(const char* text) {
    int parts[4] = {};
    int length = 0;
    if (!IsDigit(text[0]) || std::sscanf(text, "%3d.%3d.%3d.%3d%n", &parts[0], &parts[1], &parts[2],
                                         &parts[3], &length) < 4) {
        return 0;
    }
    const bool possible = std::all_of(std::begin(parts), std::end(parts),
                                      [](int part) { return part >= 0 && part <= 255; });
    const char next = text[length];
    return possible && !IsAlphanumeric(next) ? static_cast<std::size_t>(length) : 0;
}

// The run of letters, digits and colons that is an IPv6 address; 0 when it is none.
std::size_t ScanIpv6(const std::string& text, std::size_t at) {
    std::size_t end = at;
    int colons = 0;
    while (end < text.size() &&
           (text[end] == ':' || std::isxdigit(static_cast<unsigned char>(text[end])) != 0)) {
        if (text[end] == ':') ++colons;
        ++end;
    }
    const std::string run = text.substr(at, end - at);
    const bool address = colons >= 2 && (Contains(run, "::") || colons == 7) && run.size() > 4;
    return address && (end == text.size() || !IsAlphanumeric(text[end])) ? end - at : 0;
}

// "20260314-091502": when, not who.
bool IsTimeStamp(const std::string& text, std::size_t at, std::size_t length) {
    const auto stands = [&](std::size_t place, const char* what) {
        return text.compare(place, 2, what) == 0;
    };
    if (length == 8 && stands(at, "20")) return at + 8 < text.size() && text[at + 8] == '-';
    return length == 6 && at >= 9 && text[at - 1] == '-';
}

}  // namespace

Anonymizer::Key Anonymizer::NewKey() {
    Key key = {};
    const int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    const bool random = fd >= 0 && read(fd, key.data(), sizeof(key)) == sizeof(key);
    if (fd >= 0) close(fd);
    if (!random) {  // no /dev: at least another one each time
        timespec now = {};
        clock_gettime(CLOCK_REALTIME, &now);
        key = {static_cast<std::uint64_t>(now.tv_nsec) * 0x9e3779b97f4a7c15U,
               static_cast<std::uint64_t>(now.tv_sec) ^ static_cast<std::uint64_t>(getpid())};
    }
    return key;
}

// SipHash-2-4: short, and nobody without the key can try values until one fits.
std::uint64_t Anonymizer::Hash(const std::string& text, std::uint64_t salt) const {
    SipState state = {key_[0] ^ 0x736f6d6570736575U, key_[1] ^ 0x646f72616e646f6dU,
                      key_[0] ^ 0x6c7967656e657261U, key_[1] ^ 0x7465646279746573U};
    const auto take = [&](std::uint64_t word) {
        state.d ^= word;
        state.Round();
        state.Round();
        state.a ^= word;
    };
    take(salt);
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        word |= static_cast<std::uint64_t>(static_cast<unsigned char>(text[i])) << (8 * (i % 8));
        if (i % 8 != 7) continue;
        take(word);
        word = 0;
    }
    take(word | static_cast<std::uint64_t>(text.size()) << 56);
    state.c ^= 0xff;
    for (int i = 0; i < 4; ++i) state.Round();
    return state.a ^ state.b ^ state.c ^ state.d;
}

// Digit by digit and letter by letter; the first `kept` stay. A hexadecimal number stays one.
std::string Anonymizer::Reshaped(const std::string& text, std::size_t kept,
                                 std::uint64_t salt) const {
    const unsigned letters = IsHex(text) ? 6 : 26;
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = DecodeAt(text, at);
        const char c = text[at];
        const std::uint64_t drawn = Hash(text, salt * 4096 + at) >> 8;
        if (at < kept || (point.value < 0x80 && !IsAlphanumeric(c))) {
            result += c;
        } else if (IsDigit(c)) {
            const bool leads = at == 0 && c != '0' && text.size() > 1;
            result += static_cast<char>(leads ? '1' + drawn % 9 : '0' + drawn % 10);
        } else if (point.value < 0x80) {
            result += static_cast<char>('a' + drawn % letters);
        } else {
            AppendForeign(result, text, point, at);
        }
        at += point.length;
    }
    return result;
}

std::string Anonymizer::ReplaceCore(Personal kind, const std::string& core) {
    const auto found = replaced_.find(core);
    if (found != replaced_.end()) return found->second;
    const bool checked =
        (kind == Personal::kSerial || kind == Personal::kSimCard) && HasRightCheckDigit(core);
    std::string result;
    for (int i = 0; i < kMostTries; ++i) {
        result = Reshaped(core, KeptOf(kind, core), static_cast<std::uint64_t>(i));
        if (checked) result.back() = CheckDigit(result.substr(0, result.size() - 1));
        if (result != core && taken_.count(result) == 0) break;
    }
    taken_.insert(result);
    replaced_[core] = result;
    if (core.size() >= kShortestSecret && kind != Personal::kText) secrets_.insert(core);
    return result;
}

// Word by word, so that the beginning of a message is seen to be one.
std::string Anonymizer::ReplaceText(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && (IsAlphanumeric(text[end]) || (text[end] & 0x80) != 0)) ++end;
        if (end == at) {
            result += text[at++];
            continue;
        }
        const std::string word = text.substr(at, end - at);
        result += WithCaseOf(word, ReplaceCore(Personal::kText, Lower(word)));
        at = end;
    }
    return result;
}

// Private, local and special networks are told apart by their first numbers, which stay.
std::string Anonymizer::ReplaceAddress(const std::string& address) {
    int parts[4] = {};
    if (Contains(address, ":")) {
        const std::size_t kept = address.find(':') + 1;
        return address.substr(0, kept) +
               ReplaceCore(Personal::kAddress, Lower(address.substr(kept)));
    }
    if (std::sscanf(address.c_str(), "%3d.%3d.%3d.%3d", &parts[0], &parts[1], &parts[2],
                    &parts[3]) < 4) {
        return ReplaceText(address);
    }
    const int* p = parts;
    const bool special = p[0] == 0 || p[0] == 127 || p[0] == 255 || address == "8.8.8.8";
    if (special) return address;
    const auto found = replaced_.find(address);
    if (found != replaced_.end()) return found->second;
    const bool two_stay = (p[0] == 192 && p[1] == 168) || (p[0] == 169 && p[1] == 254) ||
                          (p[0] == 172 && p[1] >= 16 && p[1] <= 31) ||
                          (p[0] == 100 && p[1] >= 64 && p[1] <= 127);
    std::string result;
    for (std::uint64_t salt = 0; salt < kMostTries; ++salt) {
        const std::uint64_t drawn = Hash(address, salt);
        result =
            Format("%d.%d.%d.%d", p[0] == 10 || two_stay ? p[0] : 203,
                   two_stay ? p[1] : static_cast<int>(drawn >> 8 & 0xff),
                   static_cast<int>(drawn >> 16 & 0xff), static_cast<int>((drawn >> 24) % 254 + 1));
        if (result != address && taken_.count(result) == 0) break;
    }
    taken_.insert(result);
    secrets_.insert(address);
    replaced_[address] = result;
    return result;
}

std::string Anonymizer::Replace(Personal kind, const std::string& value) {
    if (value.empty() || value == "Unknown") return value;
    if (kind == Personal::kText) return ReplaceText(value);
    if (kind == Personal::kAddress) return ReplaceAddress(value);
    // "+1555" and "1555" are one number; "APN.example" and "apn.example" one APN.
    const std::size_t start = value[0] == '+' ? 1 : 0;
    const std::string core = value.substr(start);
    return value.substr(0, start) + WithCaseOf(core, ReplaceCore(kind, Lower(core)));
}

// Longer ones first: one may hold another.
std::string Anonymizer::ScrubKnown(const std::string& text) const {
    std::string result;
    const std::string lower = Lower(text);
    for (std::size_t at = 0; at < text.size();) {
        const std::string* longest = nullptr;
        for (const std::string& secret : secrets_) {
            if (lower.compare(at, secret.size(), secret) != 0) continue;
            const std::size_t end = at + secret.size();
            const bool alone = (at == 0 || !IsAlphanumeric(text[at - 1])) &&
                               (end == text.size() || !IsAlphanumeric(text[end]));
            if (alone && (longest == nullptr || secret.size() > longest->size())) {
                longest = &secret;
            }
        }
        if (longest == nullptr) {
            result += text[at++];
            continue;
        }
        result += WithCaseOf(text.substr(at, longest->size()), replaced_.at(*longest));
        at += longest->size();
    }
    return result;
}

std::string Anonymizer::Scrub(const std::string& text, std::size_t digits) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const bool starts = at == 0 || !IsAlphanumeric(text[at - 1]);
        std::size_t length = starts ? ScanIpv4(text.c_str() + at) : 0;
        if (length == 0 && starts) length = ScanIpv6(text, at);
        if (length > 0) {
            result += ReplaceAddress(text.substr(at, length));
            at += length;
            continue;
        }
        std::size_t end = at;
        while (end < text.size() && IsAlphanumeric(text[end])) ++end;
        const std::string run = text.substr(at, end - at);
        const bool number = !run.empty() && std::all_of(run.begin(), run.end(), IsDigit);
        const bool long_hex = run.size() >= kLongHex && IsHex(run);
        // A known one is left to the second walk, which sees longer ones than a run.
        if (((number && run.size() >= digits) || long_hex) && replaced_.count(Lower(run)) == 0 &&
            taken_.count(Lower(run)) == 0 && !IsTimeStamp(text, at, run.size())) {
            const bool serial = run.size() >= 14 && run.size() <= 16;
            const Personal kind = serial             ? Personal::kSerial
                                  : run.size() >= 18 ? Personal::kSimCard
                                                     : Personal::kNumber;
            result += Replace(kind, run);
        } else {
            result += run;
        }
        at = end;
        if (at < text.size() && run.empty()) result += text[at++];
    }
    return ScrubKnown(result);
}

bool Anonymizer::Leaks(const std::string& text) const {
    const std::string lower = Lower(text);
    for (const std::string& secret : secrets_) {
        if (secret.size() < kShortestLeak || taken_.count(secret) > 0) continue;
        for (std::size_t at = lower.find(secret); at != std::string::npos;
             at = lower.find(secret, at + 1)) {
            const std::size_t end = at + secret.size();
            const bool alone = (at == 0 || !IsAlphanumeric(lower[at - 1])) &&
                               (end == lower.size() || !IsAlphanumeric(lower[end]));
            if (alone) return true;
        }
    }
    return false;
}

}  // namespace modemctl

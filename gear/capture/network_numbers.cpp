#include "capture/network_numbers.h"

#include <algorithm>
#include <cstdio>

#include "support/text.h"

namespace capture {

namespace {

constexpr int kMostTries = 1000;

std::string Hex(std::uint64_t value, int width, bool upper) {
    const auto shown = static_cast<unsigned long long>(value);
    return upper ? Format("%0*llX", width, shown) : Format("%0*llx", width, shown);
}

// 0 and all ones mean that there is no cell.
bool IsNoCell(std::uint64_t cell) {
    return cell == 0 || Hex(cell, 1, false).find_first_not_of('f') == std::string::npos;
}

bool HasLowerLetter(const std::string& digits) {
    return std::any_of(digits.begin(), digits.end(), [](char c) { return c >= 'a' && c <= 'f'; });
}

// How many numbers in front tell the kind of network: those of the private and shared ones.
std::size_t KeptOf(const std::string& address) {
    int first = 0;
    int second = 0;
    if (std::sscanf(address.c_str(), "%3d.%3d", &first, &second) < 2) return 0;
    if (first == 10) return 1;
    const bool two = (first == 192 && second == 168) || (first == 169 && second == 254) ||
                     (first == 172 && second >= 16 && second < 32) ||
                     (first == 100 && second >= 64 && second < 128);
    return two ? 2 : 0;
}

}  // namespace

std::string NetworkNumbers::ReplaceCell(const std::string& digits, int base) {
    const std::uint64_t cell = std::stoull(digits, nullptr, base);
    if (IsNoCell(cell)) return digits;
    const std::uint64_t other = OtherCell(cell);
    const int width = static_cast<int>(digits.size());
    if (base == 16) return Hex(other, width, !HasLowerLetter(digits));
    return Format("%0*llu", width, static_cast<unsigned long long>(other));
}

// With the same first hexadecimal digit, and as many decimal ones. One of a single digit tells
// nothing and stays.
std::uint64_t NetworkNumbers::OtherCell(std::uint64_t cell) {
    const auto found = cells_.find(cell);
    if (found != cells_.end()) return found->second;
    std::uint64_t unit = 1;
    while (cell / unit >= 16) unit *= 16;
    const std::size_t decimals = std::to_string(cell).size();
    std::uint64_t other = cell;
    for (int i = 0; i < kMostTries && unit > 1; ++i) {
        const std::uint64_t drawn = cell / unit * unit + random_() % unit;
        if (drawn == cell || IsNoCell(drawn) || std::to_string(drawn).size() != decimals) continue;
        if (!taken_cells_.insert(drawn).second) continue;
        other = drawn;
        break;
    }
    cells_[cell] = other;
    return other;
}

std::string NetworkNumbers::ReplaceAddress(const std::string& address) {
    if (address.find_first_not_of("0.:") == std::string::npos) return address;  // none yet
    const auto found = addresses_.find(address);
    if (found != addresses_.end()) return found->second;
    std::string other;
    for (int i = 0; i < kMostTries; ++i) {
        other = DrawAddress(address);
        if (other != address && taken_addresses_.insert(other).second) break;
    }
    addresses_[address] = other;
    return other;
}

// Number by number, digit for digit.
std::string NetworkNumbers::DrawAddress(const std::string& address) {
    const bool dotted = !Contains(address, ":");
    std::size_t kept = dotted ? KeptOf(address) : 1;
    std::string result;
    for (std::size_t at = 0; at < address.size();) {
        const std::size_t end = std::min(address.find_first_of(".:", at), address.size());
        const std::string number = address.substr(at, end - at);
        if (kept > 0) {
            --kept;
            result += number;
        } else if (dotted && number.size() == 3) {
            result += std::to_string(100 + random_() % 155);  // to 254
        } else {
            for (std::size_t i = 0; i < number.size(); ++i) {
                result += "123456789abcdef"[random_() % (dotted ? 9 : 15)];
            }
        }
        if (end < address.size()) result += address[end];
        at = end + 1;
    }
    return result;
}

}  // namespace capture

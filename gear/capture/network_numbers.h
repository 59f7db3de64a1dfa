// Cells and addresses replaced by others of the same length. They are numbers first: a cell may
// stand in either notation, and an address has to remain one.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>

namespace capture {

class NetworkNumbers {
  public:
    explicit NetworkNumbers(std::uint64_t seed) : random_(seed) {}

    // "1C3D401" of base 16, or the same cell as "29611009" of base 10.
    std::string ReplaceCell(const std::string& digits, int base);
    // IPv4, or anything with colons. The kind of network stays.
    std::string ReplaceAddress(const std::string& address);

  private:
    std::uint64_t OtherCell(std::uint64_t cell);
    std::string DrawAddress(const std::string& address);

    std::mt19937_64 random_;
    std::map<std::uint64_t, std::uint64_t> cells_;
    std::set<std::uint64_t> taken_cells_;
    std::map<std::string, std::string> addresses_;
    std::set<std::string> taken_addresses_;
};

}  // namespace capture

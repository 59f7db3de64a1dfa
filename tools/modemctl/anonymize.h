// Personal data replaced by others of the same shape: digits by digits, letters by letters, what is
// between them kept. Within one report, the same is always replaced by the same, so that it can
// still be followed; between two reports nothing can be compared, as each has a key of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace modemctl {

enum class Personal {
    kSerial,      // IMEI, IMEISV, ESN: the check digit stays right
    kSimCard,     // ICCID: begins with 89, the check digit stays right
    kSubscriber,  // IMSI: country and network stay
    kNumber,      // of a telephone, or a sender's name
    kCell,        // cell, location and tracking area
    kApn,
    kAddress,  // IPv4 or IPv6: which kind of network stays
    kText,     // a message, word by word
};

class Anonymizer {
  public:
    using Key = std::array<std::uint64_t, 2>;
    explicit Anonymizer(const Key& key) : key_(key) {}
    // A key that nobody has had.
    static Key NewKey();

    std::string Replace(Personal kind, const std::string& value);

    // Free text: what was replaced before, wherever it stands alone, and whatever looks like an
    // address or a number of at least so many digits.
    std::string Scrub(const std::string& text, std::size_t digits = 7);

    // The last look before anything is written: true when something that was replaced still stands
    // in the text.
    bool Leaks(const std::string& text) const;

    std::size_t Count() const { return replaced_.size(); }

  private:
    std::uint64_t Hash(const std::string& text, std::uint64_t salt) const;
    std::string Reshaped(const std::string& text, std::size_t kept, std::uint64_t salt) const;
    std::string ReplaceCore(Personal kind, const std::string& core);
    std::string ReplaceText(const std::string& text);
    std::string ReplaceAddress(const std::string& address);
    std::string ScrubKnown(const std::string& text) const;

    Key key_;
    std::map<std::string, std::string> replaced_;
    std::set<std::string> taken_;    // replacements: two never share one
    std::set<std::string> secrets_;  // long enough to be looked for in free text
};

}  // namespace modemctl

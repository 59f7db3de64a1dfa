#include "sim/modem/pdu.h"

#include <algorithm>
#include <cstdlib>

#include "sim/modem/sms_alphabet.h"

namespace sim {

namespace {

constexpr unsigned char kInternational = 0x91;
constexpr unsigned char kNational = 0x81;
constexpr unsigned char kAlphanumeric = 0xD0;
constexpr unsigned char kTypeOfNumber = 0x70;  // the bits of a number's type that tell its kind

constexpr unsigned char kDeliverOneOnly = 0x04;  // and no more messages wait
constexpr unsigned char kMessageType = 0x03;
constexpr unsigned char kSubmit = 0x01;
constexpr unsigned char kHasHeader = 0x40;

constexpr unsigned char kUcs2 = 0x08;
constexpr std::size_t kMostSeptets = 160;
constexpr std::size_t kMostOctets = 140;

bool IsInternational(const std::string& number) {
    return StartsWith(number, "+");
}

std::string Digits(const std::string& number) {
    return IsInternational(number) ? number.substr(1) : number;
}

bool IsDialable(const std::string& number) {
    const std::string digits = Digits(number);
    return !digits.empty() && digits.find_first_not_of("0123456789") == digits.npos;
}

// Two digits an octet, the first in the low half; a half that is left over is all ones.
Octets SwappedDigits(std::string digits) {
    if (digits.size() % 2 != 0) digits += '?';
    Octets octets;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        octets.push_back(
            static_cast<unsigned char>((digits[i + 1] - '0') << 4 | (digits[i] - '0')));
    }
    return octets;
}

void Append(const Octets& more, Octets* octets) {
    octets->insert(octets->end(), more.begin(), more.end());
}

Octets ServiceCentre(const std::string& number) {
    if (!IsDialable(number)) return {0};
    Octets octets = SwappedDigits(Digits(number));
    octets.insert(octets.begin(), IsInternational(number) ? kInternational : kNational);
    octets.insert(octets.begin(), static_cast<unsigned char>(octets.size()));
    return octets;
}

// The sender's number, or its name; a name has at most eleven characters.
Octets Originator(const std::string& sender) {
    constexpr std::size_t kLongestNumber = 20;
    constexpr std::size_t kLongestName = 11;
    if (IsDialable(sender)) {
        const std::string digits = Digits(sender).substr(0, kLongestNumber);
        Octets octets = {static_cast<unsigned char>(digits.size()),
                         IsInternational(sender) ? kInternational : kNational};
        Append(SwappedDigits(digits), &octets);
        return octets;
    }
    std::vector<unsigned char> name;
    if (!ToSeptets(sender, &name)) name.assign(1, '?');
    name.resize(std::min(name.size(), kLongestName));
    const Octets packed = Pack(name);
    Octets octets = {static_cast<unsigned char>((name.size() * 7 + 3) / 4), kAlphanumeric};
    Append(packed, &octets);
    return octets;
}

// Of "26/03/14,09:15:02-20": the digits pair by pair, a zone west of Greenwich with a bit of its
// own.
Octets TimeStamp(const std::string& stamp) {
    std::string digits;
    for (const char c : stamp) {
        if (c >= '0' && c <= '9') digits += c;
    }
    digits.resize(14, '0');
    Octets octets = SwappedDigits(digits);
    constexpr unsigned char kWest = 0x08;
    if (stamp.find('-') != stamp.npos) octets.back() |= kWest;
    return octets;
}

// The coding, the length and the text.
Octets CodedText(const std::string& text) {
    std::vector<unsigned char> septets;
    if (ToSeptets(text, &septets)) {
        septets.resize(std::min(septets.size(), kMostSeptets));
        Octets octets = {static_cast<unsigned char>(septets.size())};
        Append(Pack(septets), &octets);
        return octets;
    }
    Octets units = ToUcs2(text);
    units.resize(std::min(units.size(), kMostOctets));
    units.insert(units.begin(), static_cast<unsigned char>(units.size()));
    return units;
}

unsigned char CodingOf(const std::string& text) {
    std::vector<unsigned char> septets;
    return ToSeptets(text, &septets) ? 0 : kUcs2;
}

// Reads octets one after the other; once there are too few, everything is empty and it has failed.
class OctetReader {
  public:
    explicit OctetReader(Octets octets) : octets_(std::move(octets)) {}

    bool Failed() const { return failed_; }
    unsigned char Take() {
        const Octets one = Take(1);
        return one.empty() ? 0 : one[0];
    }
    Octets Take(std::size_t count) {
        if (count > octets_.size() - at_) failed_ = true;
        if (failed_) return {};
        const auto from = octets_.begin() + static_cast<std::ptrdiff_t>(at_);
        at_ += count;
        return {from, from + static_cast<std::ptrdiff_t>(count)};
    }
    std::size_t Left() const { return octets_.size() - at_; }

  private:
    Octets octets_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

std::string TakeNumber(OctetReader* reader) {
    const std::size_t digits = reader->Take();
    const unsigned char type = reader->Take();
    std::string number;
    for (const unsigned char pair : reader->Take((digits + 1) / 2)) {
        number += static_cast<char>('0' + (pair & 0xF));
        number += static_cast<char>('0' + (pair >> 4));
    }
    number.resize(std::min(number.size(), digits));
    return ((type ^ kInternational) & kTypeOfNumber) == 0 ? "+" + number : number;
}

void SkipValidity(unsigned char first, OctetReader* reader) {
    constexpr std::size_t kSizes[] = {0, 7, 1, 7};
    reader->Take(kSizes[first >> 3 & 3]);
}

// A long message's header stands before its text, which goes on at the next whole septet.
std::string TakeText(bool has_header, unsigned char coding, OctetReader* reader) {
    const std::size_t length = reader->Take();
    Octets octets = reader->Take(reader->Left());
    const std::size_t header = has_header && !octets.empty() ? octets[0] + 1U : 0;
    if ((coding & 0x0C) == 0) return FromSeptets(Unpack(octets, (header * 8 + 6) / 7, length));
    octets.erase(octets.begin(),
                 octets.begin() + static_cast<std::ptrdiff_t>(std::min(header, octets.size())));
    return (coding & 0x0C) == kUcs2 ? FromUcs2(octets) : std::string(octets.begin(), octets.end());
}

}  // namespace

Pdu DeliverPdu(const StoredSms& message, const std::string& service_centre) {
    Octets octets = {kDeliverOneOnly};
    Append(Originator(message.number), &octets);
    Append({0, CodingOf(message.text)}, &octets);
    Append(TimeStamp(message.stamp), &octets);
    Append(CodedText(message.text), &octets);
    return {ToHex(ServiceCentre(service_centre)) + ToHex(octets), static_cast<int>(octets.size())};
}

std::optional<Submitted> ReadSubmitPdu(std::string_view hex, int length) {
    Octets octets;
    if (!FromHex(hex, &octets)) return std::nullopt;
    OctetReader reader(std::move(octets));
    reader.Take(reader.Take());  // the service centre
    if (reader.Failed() || reader.Left() != static_cast<std::size_t>(length)) return std::nullopt;
    const unsigned char first = reader.Take();
    if ((first & kMessageType) != kSubmit) return std::nullopt;
    reader.Take();  // the reference, which the modem chooses
    Submitted message;
    message.to = TakeNumber(&reader);
    reader.Take();  // the protocol
    const unsigned char coding = reader.Take();
    SkipValidity(first, &reader);
    message.text = TakeText((first & kHasHeader) != 0, coding, &reader);
    if (reader.Failed()) return std::nullopt;
    return message;
}

}  // namespace sim

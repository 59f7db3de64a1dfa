// How the text of a message travels: the 7-bit alphabet of GSM, packed, or UCS2. Texts are UTF-8;
// bytes that are none count as Latin-1.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

using Octets = std::vector<unsigned char>;

// A text of the 7-bit alphabet, a code for each element: those behind the escape have two. False
// when a character is not in it.
bool ToSeptets(std::string_view text, std::vector<unsigned char>* septets);
std::string FromSeptets(const std::vector<unsigned char>& septets);

// Eight septets in seven octets. `fill` is the number of septets in front that hold something else.
Octets Pack(const std::vector<unsigned char>& septets);
std::vector<unsigned char> Unpack(const Octets& octets, std::size_t fill, std::size_t count);

Octets ToUcs2(std::string_view text);
std::string FromUcs2(const Octets& octets);  // an odd octet at the end is dropped

std::string ToHex(const Octets& octets);  // in capitals
bool FromHex(std::string_view text, Octets* octets);

}  // namespace sim

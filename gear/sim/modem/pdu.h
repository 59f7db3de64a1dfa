// Messages as they travel in PDU mode: octets in hexadecimal, the service centre's number in front.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/modem/sms_store.h"

namespace sim {

struct Pdu {
    std::string hex;
    int length;  // in octets, without the service centre's number
};

// A received message, for the host. What does not fit one message is cut.
Pdu DeliverPdu(const StoredSms& message, const std::string& service_centre);

struct Submitted {
    std::string to;
    std::string text;  // UTF-8; of a long message, this part of it
};

// A message that the host wants sent; nothing when the hexadecimal text is none of `length` octets.
std::optional<Submitted> ReadSubmitPdu(std::string_view hex, int length);

}  // namespace sim

#include "sim/modem/listing.h"

#include "sim/modem/pdu.h"
#include "sim/modem/sms_alphabet.h"

namespace sim {

namespace {

Pdu PduOf(const State& state, const StoredSms& message) {
    return DeliverPdu(message, state.Setting("service-centre"));
}

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string TextEntry(const std::string& form, int index, StoredSms message) {
    if (form == "ucs2") {
        message.number = ToHex(ToUcs2(message.number));
        message.text = ToHex(ToUcs2(message.text));
    }
    std::string line = "+CMGL: " + std::to_string(index) + "," +
                       Quoted(SmsStateName(message.state)) + "," + Quoted(message.number) + ",";
    if (form == "comma") line += Quoted("Doe, John");
    if (form != "no-name") line += ",";
    line += Quoted(message.stamp);
    if (form == "seventh") line += ",145";
    if (form == "header") message.text += "\r\n+CMGL: 9,\"REC UNREAD\",\"+15550\"";
    return line + "\r\n" + message.text;
}

}  // namespace

std::string ListingEntry(const State& state, int index) {
    const StoredSms& message = *state.sms.Find(index);
    if (state.modes.cmgf == 1) return TextEntry(state.Setting("form.listing"), index, message);
    const Pdu pdu = PduOf(state, message);
    return Print("+CMGL: %d,%d,,%d\r\n", index, static_cast<int>(message.state), pdu.length) +
           pdu.hex;
}

std::string ReadingEntry(const State& state, const StoredSms& message) {
    if (state.modes.cmgf == 1) {
        return "+CMGR: " + Quoted(SmsStateName(message.state)) + "," + Quoted(message.number) +
               ",," + Quoted(message.stamp) + "\r\n" + message.text;
    }
    const Pdu pdu = PduOf(state, message);
    return Print("+CMGR: %d,,%d\r\n", static_cast<int>(message.state), pdu.length) + pdu.hex;
}

}  // namespace sim

// All that the simulated modem remembers. The commands, the answers' values and the control
// language work on this; the dialogue with the host is kept apart (dialogue.h, modem.h).
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/modem/clock.h"
#include "sim/modem/data_call.h"
#include "sim/modem/radio.h"
#include "sim/modem/sms_store.h"
#include "sim/modem/text.h"

namespace sim {

using Settings = std::unordered_map<std::string, std::string>;

struct PdpContext {
    std::string type;  // "IP", "IPV6", "IPV4V6"
    std::string apn;
    std::string address;  // what +CGDCONT? shows; "0.0.0.0" by default
};

// Choices of the host that a reset takes back.
struct Modes {
    bool echo = true;
    int cmee = 0;  // error reports: 0 plain ERROR, 1 numbers, 2 texts
    int creg = 0;  // 0 silent, 1 reports changes, 2 with the cell
    int cgreg = 0;
    int cereg = 0;
    int cmgf = 0;  // 0 PDU mode, 1 text mode
    int cops = 0;  // how the operator is told: 0 and 1 by name, 2 by number
};

struct SmsFailure {
    int code = 0;
    int times = 0;  // how many sends still fail; negative: all
    bool at_prompt = false;
};

// The message that the host is about to give.
struct Draft {
    std::string to;      // in text mode
    int pdu_length = 0;  // in octets; 0 in text mode
};

struct State {
    Settings settings;
    Modes modes;
    Radio radio;
    DataCall call;
    SmsStore sms;
    Clock clock;
    std::map<int, PdpContext> contexts;

    std::vector<SentSms> sent;
    int next_reference = 0;  // of +CMGS, 0 to 255
    SmsFailure sms_failure;
    Draft draft;
    Micros prompt_delay = 10 * kMillisecond;
    Micros send_delay = 300 * kMillisecond;

    std::uint64_t seed = 1;
    Micros now = 0;
    Micros powered_at = 0;

    // Empty when there is no such setting.
    const std::string& Setting(const std::string& name) const;
    bool IsOn(const std::string& name) const { return Setting(name) == "on"; }
};

}  // namespace sim

// Text messages.
#include "sim/control/words.h"

namespace sim {

namespace {

std::string Sms(PlayedModem& modem, const Words& words) {
    modem.ReceiveSms(words[0], Join({words.begin() + 1, words.end()}));
    return kOk;
}

std::string SmsFails(PlayedModem& modem, const Words& words) {
    SmsFailure& failure = modem.Fate().sms_failure;
    if (words[0] == "off") {
        failure = {};
        return kOk;
    }
    const auto code = ParseInt(words[0]);
    SmsFailure wanted{code.value_or(0), 1, false};
    for (std::size_t i = 1; i < words.size(); ++i) {
        const auto times = ReadTimes(words[i]);
        if (times) {
            wanted.times = *times;
        } else if (words[i] == "prompt" || words[i] == "body") {
            wanted.at_prompt = words[i] == "prompt";
        } else {
            return ErrorText("not understood: " + words[i]);
        }
    }
    if (!code || *code < 0) return ErrorText("the code is a number");
    failure = wanted;
    return kOk;
}

std::string Store(PlayedModem& modem, const Words& words) {
    constexpr int kMostPlaces = 10000;
    const auto places = ParseInt(words[0]);
    if (!places || *places < 0 || *places > kMostPlaces) {
        return ErrorText("the store has 0 to 10000 places");
    }
    modem.Fate().sms.SetCapacity(*places);
    return kOk;
}

}  // namespace

const std::vector<Verb>& MessageWords() {
    static const std::vector<Verb> verbs = {
        {"sms", "NUMBER \"TEXT\"          a message arrives", 2, 50, &Sms},
        {"sms-fails", "CODE [TIMES|forever] [prompt|body], or off", 1, 3, &SmsFails},
        {"store", "PLACES                 capacity of the message store", 1, 1, &Store},
    };
    return verbs;
}

}  // namespace sim

// The control language: a person or a test makes things happen to the modem, one line at a time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/modem/modem.h"

namespace sim {

class ControlLanguage {
  public:
    explicit ControlLanguage(Modem* modem) : modem_(*modem) {}

    // "ok", "ok: value" or "error: why". No line can name a file or run a program.
    std::string Run(std::string_view line);

  private:
    using Words = std::vector<std::string>;  // the arguments, without the verb
    using Action = std::string (ControlLanguage::*)(const Words&);
    struct Verb {
        const char* name;
        const char* usage;
        std::size_t least, most;  // number of arguments
        Action action;
    };
    static const std::vector<Verb>& Verbs();

    std::string Signal(const Words& words);
    std::string Register(const Words& words);
    std::string Deregister(const Words& words);
    std::string Cell(const Words& words);
    std::string SetSim(const Words& words);
    std::string Service(const Words& words);
    std::string Call(const Words& words);
    std::string DropCall(const Words& words);
    std::string ConnectFails(const Words& words);
    std::string CallLasts(const Words& words);
    std::string UnknownState(const Words& words);
    std::string NoAddress(const Words& words);
    std::string Sms(const Words& words);
    std::string SmsFails(const Words& words);
    std::string Store(const Words& words);
    std::string SetTime(const Words& words);
    std::string Silence(const Words& words);
    std::string Garbage(const Words& words);
    std::string Unplug(const Words& words);
    std::string Plug(const Words& words);
    std::string Say(const Words& words);
    std::string Answer(const Words& words);
    std::string Forget(const Words& words);
    std::string Drive(const Words& words);
    std::string Echo(const Words& words);
    std::string Set(const Words& words);
    std::string Status(const Words& words);
    std::string Heard(const Words& words);
    std::string Sent(const Words& words);
    std::string Help(const Words& words);

    Modem& modem_;
};

}  // namespace sim

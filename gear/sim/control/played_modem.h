// A modem whose fate somebody plays: a person or a test, line by line in the control language, or
// the profile's drive through town.
#pragma once

#include "sim/modem/modem.h"

namespace sim {

class PlayedModem : public Modem {
  public:
    using Modem::Modem;

    // One line of the control language (see `help`): "ok", "ok: value" or "error: why". No line can
    // name a file or run a program.
    std::string Control(std::string_view line, Micros now);

  private:
    void RunDriveStep(const std::string& line) override;
    std::string Run(std::string_view line);
};

}  // namespace sim

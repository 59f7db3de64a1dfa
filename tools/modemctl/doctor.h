// modemctl doctor: what is wrong with an installation, one line each, with the mend.
#pragma once

#include <string>
#include <vector>

#include "modemctl/command_line.h"
#include "modemctl/doctor_checks.h"

namespace modemctl {

extern const Subcommand kDoctorCommand;

struct CheckedFinding {
    const char* id;
    Finding finding;
};
std::vector<CheckedFinding> Examine(const Patient& patient);

std::string DoctorDocument(const std::vector<CheckedFinding>& findings, std::time_t now);
int DoctorExitCode(const std::vector<CheckedFinding>& findings);

}  // namespace modemctl

// modemctl: what the modem daemon knows, for the technician and the script. A subcommand is one
// room; its row below is all that makes it known.
#include <string>
#include <vector>

#include "modemctl/command_line.h"
#include "modemctl/doctor.h"
#include "modemctl/get.h"
#include "modemctl/log.h"
#include "modemctl/metrics.h"
#include "modemctl/sms.h"
#include "modemctl/status.h"
#include "modemctl/watch.h"
#include "modemctl/why.h"

int main(int argc, char** argv) {
    // In the order of the overview. clang-format would fill the lines.
    // clang-format off
    const std::vector<const modemctl::Subcommand*> subcommands = {
        &modemctl::kStatusCommand,
        &modemctl::kWatchCommand,
        &modemctl::kWhyCommand,
        &modemctl::kLogCommand,
        &modemctl::kSmsCommand,
        &modemctl::kDoctorCommand,
        &modemctl::kMetricsCommand,
        &modemctl::kGetCommand,
    };
    // clang-format on
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return modemctl::RunCommandLine(arguments, subcommands);
}

// Options are recognised by a word inside them, in a fixed order.

#include "core/command_line.h"

#include <cstdio>
#include <cstring>

#include "state/settings.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

// An argument counts with its first 80 characters.
std::string FirstEighty(const char* argument) {
    return std::string(argument, strnlen(argument, sizeof(g_c_PortPath)));
}

void SelectCard(const cards::Model& model) {
    g_i_CardType = model.type;
    if (model.mark == cards::Mark::kIsE362) g_i_IsE362 = 1;
    if (model.mark == cards::Mark::kIsNotE362) g_i_IsE362 = 0;
    if (model.mark == cards::Mark::kIsMc75i) g_i_IsMc75i = 1;
    Log("card type set to %s", model.logged_as);
    // Every card option takes -cind1 back, deliberately: the start scripts put it last where a
    // card needs it.
    // Oddity cind1-behind-the-card: -cind1 counts only behind the card option.
    g_i_UseCind1 = 0;
}

void ReadOption(const char* argument) {
    if (argument[1] == 'd') {
        ++g_i_DebugLevel;
        return;
    }
    const std::string option = FirstEighty(argument);
    if (Contains(option, "cind1")) {
        g_i_UseCind1 = 1;
        // Oddity querry: search the log for "using querry type cind1".
        Log("using querry type cind1");  // Spelled so on purpose: searched for in the field.
        return;
    }
    if (const cards::Model* model = cards::ModelOfOption(option)) SelectCard(*model);
}

// "-881|-E362|...", as a usage text has it.
std::string CardOptions() {
    std::string options;
    for (const cards::Model& model : cards::kModels) {
        if (!cards::HasOption(model)) continue;
        options += options.empty() ? "-" : "|-";
        options += model.name;
    }
    return options;
}

}  // namespace

std::string ProgramNameOf(const std::string& argv0) {
    const auto slash = argv0.rfind('/');
    if (slash == std::string::npos || slash + 1 == argv0.size()) return argv0;
    return argv0.substr(slash + 1);
}

bool ReadArguments(int argc, const char* const* argv) {
    bool have_path = false;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') {
            ReadOption(argv[i]);
        } else if (!have_path) {
            std::memcpy(g_c_PortPath, argv[i], strnlen(argv[i], sizeof(g_c_PortPath)));
            have_path = true;
        }
    }
    return have_path;
}

void PrintUsage(const std::string& program_name) {
    std::fprintf(stderr,
                 "usage: %s [%s] [-cind1] [-d]... DEVICE\n"
                 "\n"
                 "  DEVICE   the modem's AT command port, for example /dev/ttyUSB0\n"
                 "  -881 ... the modem's model; a generic modem without it\n"
                 "  -cind1   poll the signal with AT+CIND? (stands behind the model)\n"
                 "  -d       more in the system log; up to four times\n",
                 program_name.c_str(), CardOptions().c_str());
}

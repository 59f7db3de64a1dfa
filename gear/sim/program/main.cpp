// modem-sim: a simulated cellular modem on a pseudo terminal, and the tool that talks to one.
#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "sim/modem/profile.h"
#include "sim/program/control_socket.h"
#include "sim/program/runner.h"
#include "state/cards.h"
#include "support/version.h"

namespace {

constexpr int kUsageError = 2;

void PrintUsage(std::FILE* where) {
    std::fputs(
        "usage: modem-sim [OPTION]...             run a simulated modem until a signal\n"
        "       modem-sim ctl [--control SOCKET] WORD...   tell a running modem what happens\n"
        "\n"
        "  --profile NAME|FILE   the model, generic if not given; the path of one of your own\n"
        "  --profiles DIR        where the profiles are\n"
        "  --link PATH           keep a symbolic link to the terminal here\n"
        "  --control SOCKET      path of the control socket\n"
        "  --seed N              seed of noise and of other chance\n"
        "  --log FILE            append what is heard and said\n"
        "  --on-call-up CMD      shell command when the data call is up\n"
        "  --on-call-down CMD    shell command when the data call is down\n"
        "  --speak-up            tell changes of the signal without being asked\n"
        "  --version             the version, and nothing else\n"
        "\n"
        "The models:\n",
        where);
    for (const cards::Model& model : cards::kModels) {
        std::fprintf(where, "  %-8s %s\n", model.name, model.title);
    }
    std::fputs("\nmodem-sim ctl help lists the words; modem-sim(1) explains them.\n", where);
}

enum Option {
    kProfile = 1000,
    kProfiles,
    kLink,
    kControl,
    kSeed,
    kLog,
    kUp,
    kDown,
    kSpeak,
    kVersionOnly,
    kHelp
};

constexpr option kOptions[] = {
    {"profile", required_argument, nullptr, kProfile},
    {"profiles", required_argument, nullptr, kProfiles},
    {"link", required_argument, nullptr, kLink},
    {"control", required_argument, nullptr, kControl},
    {"seed", required_argument, nullptr, kSeed},
    {"log", required_argument, nullptr, kLog},
    {"on-call-up", required_argument, nullptr, kUp},
    {"on-call-down", required_argument, nullptr, kDown},
    {"speak-up", no_argument, nullptr, kSpeak},
    {"version", no_argument, nullptr, kVersionOnly},
    {"help", no_argument, nullptr, kHelp},
    {nullptr, 0, nullptr, 0},
};

// The exit status when the program should end at once, else -1.
int TakeOption(int chosen, sim::RunOptions* options) {
    switch (chosen) {
        case kProfile:
            options->profile = optarg;
            return -1;
        case kProfiles:
            sim::SetProfileDirectory(optarg);
            return -1;
        case kLink:
            options->link = optarg;
            return -1;
        case kControl:
            options->control = optarg;
            return -1;
        case kSeed:
            options->seed = std::strtoull(optarg, nullptr, 10);
            return -1;
        case kLog:
            options->log = optarg;
            return -1;
        case kUp:
            options->on_call_up = optarg;
            return -1;
        case kDown:
            options->on_call_down = optarg;
            return -1;
        case kSpeak:
            options->speak_up = true;
            return -1;
        case kVersionOnly:
            std::printf("modem-sim %s\n", kVersion);
            return 0;
        case kHelp:
            PrintUsage(stdout);
            return 0;
        default:
            PrintUsage(stderr);
            return kUsageError;
    }
}

int RunModem(int argc, char** argv) {
    sim::RunOptions options;
    options.control = sim::DefaultControlPath();
    for (int chosen; (chosen = getopt_long(argc, argv, "+", kOptions, nullptr)) != -1;) {
        const int status = TakeOption(chosen, &options);
        if (status >= 0) return status;
    }
    if (optind != argc) {
        PrintUsage(stderr);
        return kUsageError;
    }
    sim::Runner(options).Run();
    return 0;
}

int RunControl(int argc, char** argv) {
    std::string path = sim::DefaultControlPath();
    int first = 2;
    if (argc > 3 && std::string(argv[2]) == "--control") {
        path = argv[3];
        first = 4;
    }
    std::vector<std::string> words(argv + first, argv + argc);
    if (words.empty()) words = {"help"};
    const std::string answer = sim::AskModem(path, sim::ControlLine(words));
    if (answer.compare(0, 2, "ok") != 0) {
        std::fprintf(stderr, "modem-sim: %s\n", answer.c_str());
        return 1;
    }
    if (answer.size() > 4) std::printf("%s\n", answer.c_str() + 4);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc > 1 && std::string(argv[1]) == "ctl") return RunControl(argc, argv);
        return RunModem(argc, argv);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "modem-sim: %s\n", problem.what());
        return 1;
    }
}

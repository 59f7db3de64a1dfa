#include "modemctl/sms.h"

#include <algorithm>
#include <iterator>

#include "modemctl/exit_code.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr int kMostNames = 10000;
constexpr std::size_t kAnyNumber = kMostNames;

struct Action {
    const char* name;
    const char* options;  // those it knows, each between blanks
    std::size_t least_arguments;
    std::size_t most_arguments;
    bool changes_spool;
    int (*run)(Session& session);
};

constexpr Action kActions[] = {
    {"send", " --wait --timeout --replace --dry-run ", 1, 2, true, RunSmsSend},
    {"list", " --most ", 0, 0, false, RunSmsList},
    {"failed", " --most ", 0, 0, false, RunSmsFailed},
    {"show", " ", 1, kAnyNumber, false, RunSmsShow},
    {"requeue", " --all ", 0, kAnyNumber, true, RunSmsRequeue},
    {"delete", " ", 1, kAnyNumber, true, RunSmsDelete},
    {"follow", " --exec --state --time-limit --tries --pause --delete ", 0, 0, true, RunSmsFollow},
};

bool IsOwnOption(const std::string& name) {
    return std::any_of(kSmsCommand.options.begin(), kSmsCommand.options.end(),
                       [&](const Option& row) { return row.name == name; });
}

// The first option that belongs to another action, empty for none.
std::string StrangeOption(const Session& session, const Action& action) {
    for (const auto& option : session.options) {
        const bool known = Contains(action.options, " " + option.first + " ");
        if (IsOwnOption(option.first) && !known) return option.first;
    }
    return "";
}

int RunSms(Session& session) {
    if (session.arguments.empty()) return UsageError("sms", "which action?");
    const std::string name = session.arguments[0];
    session.arguments.erase(session.arguments.begin());
    const Action* const action = std::find_if(std::begin(kActions), std::end(kActions),
                                              [&](const Action& row) { return name == row.name; });
    if (action == std::end(kActions)) {
        return UsageError("sms", "there is no action '" + Escaped(name, false) + "'");
    }
    const std::string strange = StrangeOption(session, *action);
    if (!strange.empty()) return UsageError("sms", name + " has no option " + strange);
    if (session.arguments.size() < action->least_arguments) {
        return UsageError("sms", name + " needs more arguments");
    }
    if (session.arguments.size() > action->most_arguments) {
        return UsageError("sms", name + " has too many arguments; a TEXT goes between quotes");
    }
    const bool pretends = session.Has("--dry-run");
    if (action->changes_spool && !session.tree.IsLive() && !pretends) {
        return UsageError("sms", "--root shows a copied tree, in which nothing is changed");
    }
    return action->run(session);
}

}  // namespace

const Subcommand kSmsCommand = {
    "sms",
    "send|list|show|follow|failed|requeue|delete [ARGUMENT]...",
    "text messages: send, read, follow, try again",
    "  send NUMBER [TEXT|-]   have a message sent; the text from the arguments or standard input\n"
    "  list                   what came in, what waits, what was given up\n"
    "  show NAME...           whole messages\n"
    "  follow                 each new message as it comes; with --exec, a program for each\n"
    "  failed                 what was given up, and why\n"
    "  requeue NAME...        try again what was given up\n"
    "  delete NAME...         delete messages\n"
    "\n"
    "A NAME is as the list shows it; received/NAME, waiting/NAME or failed/NAME says where.\n"
    "Longer texts go in numbered pieces, each when the one before is gone.\n"
    "Exit status of send --wait: 0 sent; 1 refused, failed or aged out; 3 unknown.",
    {{"--wait", nullptr, "send: until it is known what became of it"},
     {"--timeout", "SPAN", "send: wait no longer (1 day and 30 minutes)"},
     {"--replace", nullptr, "send: replace what cannot be sent, and say what"},
     {"--dry-run", nullptr, "send: only show what would go on air"},
     {"--most", "NUMBER", "list, failed: the newest of each place (100; 0 for all)"},
     {"--all", nullptr, "requeue: everything that was given up"},
     {"--exec", "COMMAND", "follow: run by the shell, the text on standard input"},
     {"--state", "DIR", "follow: where is kept what has been handled"},
     {"--time-limit", "SPAN", "follow: for one run of the program (60)"},
     {"--tries", "NUMBER", "follow: runs of a failing program (3)"},
     {"--pause", "SPAN", "follow: between two of them (30)"},
     {"--delete", nullptr, "follow: delete a message that has been handled"}},
    {{"modemctl sms send +15551234567 \"The pump in shed 4 has stopped.\" --wait",
      "send it, and tell what became of it"},
     {"df -h / | modemctl sms send +15551234567 - --dry-run", "what would go on air"},
     {"modemctl sms follow --exec 'logger -t sms \"$MODEMCTL_FROM: $(cat)\"'",
      "a program for each message, once"},
     {"modemctl sms requeue --all", "try again what was given up"}},
    kMostNames,
    RunSms,
};

}  // namespace modemctl

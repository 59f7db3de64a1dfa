#include "modemctl/command_line.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "modemctl/exit_code.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/text.h"
#include "support/version.h"

namespace modemctl {

namespace {

constexpr char kUsualMaxAge[] = "60";  // twelve missed writes of the statistics

const std::vector<Option> kCommonOptions = {
    {"--json", nullptr, "one JSON document instead of a page"},
    {"--root", "DIR", "look at a copied tree of files instead of this router's"},
    {"--now", "TIME", "count ages to this time; in a copied tree: when it was copied"},
    {"--max-age", "SPAN", "older data are too old (60 seconds; 90, 15m, 2h, 1d)"},
    {"--color", "WHEN", "auto (only on a terminal), always or never"},
    {"--help", nullptr, "this text"},
};

using Subcommands = std::vector<const Subcommand*>;

std::string OptionColumn(const Option& option) {
    std::string text = std::string("  ") + option.name;
    if (option.argument != nullptr) text += std::string(" ") + option.argument;
    return Padded(text, 22) + option.help + "\n";
}

std::string Overview(const Subcommands& subcommands) {
    std::string text =
        "Usage: modemctl SUBCOMMAND [OPTION]... [ARGUMENT]...\n"
        "\n"
        "What the modem daemon knows, for people and for scripts. It reads the daemon's files and\n"
        "never touches the modem.\n"
        "\n";
    for (const Subcommand* command : subcommands) {
        text += Padded(std::string("  ") + command->name, 12) + command->summary + "\n";
    }
    text += "\nOptions of every subcommand:\n";
    for (const Option& option : kCommonOptions) text += OptionColumn(option);
    text +=
        "\n"
        "Exit status: 0 good, 1 not good, 2 usage, 3 no data, 4 data too old.\n"
        "Example: modemctl status\n"
        "More: modemctl SUBCOMMAND --help, modemctl(1)\n";
    return text;
}

std::string HelpOf(const Subcommand& command) {
    std::string text = std::string("Usage: modemctl ") + command.name;
    if (command.synopsis[0] != '\0') text += std::string(" ") + command.synopsis;
    text += std::string("\n\n") + command.description + "\n";
    if (!command.options.empty()) text += "\nOptions:\n";
    for (const Option& option : command.options) text += OptionColumn(option);
    text += "\nOptions of every subcommand:\n";
    for (const Option& option : kCommonOptions) text += OptionColumn(option);
    text += "\nExamples:\n";
    for (const Example& example : command.examples) {
        text += std::string("  ") + example.line + "\n      " + example.what + "\n";
    }
    return text;
}

const Subcommand* FindSubcommand(const Subcommands& subcommands, const std::string& name) {
    const auto found = std::find_if(subcommands.begin(), subcommands.end(),
                                    [&](const Subcommand* row) { return row->name == name; });
    return found != subcommands.end() ? *found : nullptr;
}

const Option* FindOption(const std::vector<Option>& options, const std::string& name) {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&](const Option& row) { return row.name == name; });
    return found != options.end() ? &*found : nullptr;
}

// One reading of the command line, word by word.
class Reader {
  public:
    Reader(const std::vector<std::string>& words, const Subcommands& subcommands)
        : words_(words), subcommands_(subcommands) {}

    // False, with a complaint, when it cannot be understood.
    bool Read(Session& session) {
        while (next_ < words_.size()) {
            const std::string& word = words_[next_++];
            const bool is_option = !options_ended_ && word.size() > 1 && word[0] == '-';
            if (is_option ? !TakeOption(word, session) : !TakeWord(word, session)) return false;
        }
        return true;
    }

    const Subcommand* command() const { return command_; }
    const std::string& complaint() const { return complaint_; }

  private:
    bool Complain(const std::string& text) {
        complaint_ = text;
        return false;
    }

    bool TakeWord(const std::string& word, Session& session) {
        if (command_ != nullptr) {
            session.arguments.push_back(word);
            const auto most = static_cast<std::size_t>(command_->most_arguments);
            if (session.arguments.size() <= most) return true;
            return Complain("one argument too many: '" + Escaped(word, false) + "'");
        }
        if (word == "help") {
            session.options["--help"] = "";
            return true;
        }
        command_ = FindSubcommand(subcommands_, word);
        if (command_ != nullptr) return true;
        return Complain("there is no subcommand '" + Escaped(word, false) + "'");
    }

    bool TakeOption(const std::string& word, Session& session) {
        if (word == "--") {
            options_ended_ = true;
            return true;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word == "-h" ? "--help" : word.substr(0, equals);
        const Option* option = FindOption(kCommonOptions, name);
        if (option == nullptr && command_ != nullptr) option = FindOption(command_->options, name);
        if (option == nullptr) return Complain("unknown option '" + Escaped(name, false) + "'");
        std::string value;
        if (option->argument == nullptr) {
            if (equals != std::string::npos) return Complain(name + " takes no value");
        } else if (equals != std::string::npos) {
            value = word.substr(equals + 1);
        } else if (next_ < words_.size()) {
            value = words_[next_++];
        } else {
            return Complain(name + " needs " + option->argument);
        }
        session.options[name] = value;
        return true;
    }

    const std::vector<std::string>& words_;
    const Subcommands& subcommands_;
    std::size_t next_ = 0;
    bool options_ended_ = false;
    const Subcommand* command_ = nullptr;
    std::string complaint_;
};

bool ReadColour(const std::string& text, ColourWish& wish) {
    if (text == "auto") wish = ColourWish::kAuto;
    if (text == "always") wish = ColourWish::kAlways;
    if (text == "never") wish = ColourWish::kNever;
    return text == "auto" || text == "always" || text == "never";
}

// What the common options say. Returns a complaint, empty when all is well.
std::string Prepare(Session& session) {
    ColourWish wish = ColourWish::kAuto;
    if (!ReadColour(session.Value("--color", "auto"), wish)) {
        return "--color is auto, always or never";
    }
    session.terminal = StandardOutput(wish);
    session.json = session.Has("--json");
    if (!ParseSpan(session.Value("--max-age", kUsualMaxAge), session.max_age)) {
        return "--max-age is a number of seconds, or such as 15m or 2h";
    }
    const std::string root = session.Value("--root", "/");
    session.tree = Tree(root);
    if (!session.tree.Exists("/")) return "--root: there is no '" + Escaped(root, false) + "'";
    session.now = session.tree.Now();
    if (session.Has("--now") && !ParseTime(session.Value("--now"), session.now, session.now)) {
        return "--now is a time such as \"2026-03-14 09:15:02\"";
    }
    return "";
}

}  // namespace

std::string Session::Value(const char* option, const std::string& otherwise) const {
    const auto found = options.find(option);
    return found != options.end() ? found->second : otherwise;
}

int UsageError(const char* subcommand, const std::string& complaint) {
    const std::string where = subcommand[0] != '\0' ? std::string(subcommand) + " " : "";
    std::fprintf(stderr, "modemctl: %s\nTry 'modemctl %s--help'.\n", complaint.c_str(),
                 where.c_str());
    return kUsage;
}

void Print(const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(STDOUT_FILENO, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) std::exit(kNotGood);
        done += static_cast<std::size_t>(count);
    }
}

int RunCommandLine(const std::vector<std::string>& arguments, const Subcommands& subcommands) {
    if (arguments.size() == 1 && arguments[0] == "--version") {
        Print(std::string("modemctl ") + kVersion + "\n");
        return kGood;
    }
    Session session;
    Reader reader(arguments, subcommands);
    const bool understood = reader.Read(session);
    const Subcommand* command = reader.command();
    const char* const name = command != nullptr ? command->name : "";
    if (!understood) return UsageError(name, reader.complaint());
    if (session.Has("--help")) {
        if (command == nullptr && !session.arguments.empty()) {
            return UsageError("", "there is no such subcommand");
        }
        Print(command != nullptr ? HelpOf(*command) : Overview(subcommands));
        return kGood;
    }
    if (command == nullptr) return UsageError("", "a subcommand is missing");
    const std::string complaint = Prepare(session);
    if (!complaint.empty()) return UsageError(name, complaint);
    return command->run(session);
}

}  // namespace modemctl

#include "sim/modem/profile.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <set>
#include <stdexcept>

#include "sim/modem/values.h"
#include "state/cards.h"

namespace sim {

namespace {

constexpr int kDeepestInclude = 4;
constexpr std::size_t kLongestLine = 4096;

std::string g_profile_directory;

bool IsFile(const std::string& path) {
    return access(path.c_str(), R_OK) == 0;
}

std::string ProgramDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (length <= 0) return ".";
    const std::string program(path, static_cast<std::size_t>(length));
    return program.substr(0, program.rfind('/'));
}

std::string ProfileDirectory() {
    if (!g_profile_directory.empty()) return g_profile_directory;
    const std::string candidates[] = {ProgramDirectory() + "/../share/modemd/profiles",
                                      MODEM_SIM_INSTALLED_PROFILES, MODEM_SIM_SOURCE_PROFILES};
    for (const std::string& candidate : candidates) {
        if (IsFile(candidate + "/base.profile")) return candidate;
    }
    return MODEM_SIM_INSTALLED_PROFILES;
}

bool IsFinalResult(const std::string& line) {
    return line == "OK" || line == "ERROR" || line == "NO CARRIER" ||
           StartsWith(line, "+CME ERROR:") || StartsWith(line, "+CMS ERROR:");
}

// Reads one file, and those it includes, into a profile.
class Reader {
  public:
    explicit Reader(Profile* profile) : profile_(profile) {}

    void ReadFile(const std::string& path, int depth) {
        std::ifstream file(path);
        if (!file) throw std::runtime_error(path + ": cannot be read");
        const std::string outer_path = path_;
        const int outer_line = line_number_;
        path_ = path;
        line_number_ = 0;
        std::string line;
        while (std::getline(file, line)) {
            ++line_number_;
            if (line.size() > kLongestLine) Fail("line is too long");
            ReadLine(line, depth);
        }
        answer_ = nullptr;
        path_ = outer_path;
        line_number_ = outer_line;
    }

    // Only now, since an answer may stand before the setting that it names.
    void CheckMentionedNames() const {
        for (const auto& [name, place] : mentioned_) {
            if (IsLiveValue(name) || profile_->settings.count(name) != 0) continue;
            throw std::runtime_error(place + ": unknown value " + name);
        }
    }

  private:
    std::string Place() const { return path_ + ":" + std::to_string(line_number_); }

    [[noreturn]] void Fail(const std::string& why) const {
        throw std::runtime_error(Place() + ": " + why);
    }

    void ReadLine(const std::string& line, int depth) {
        const std::string text = Trim(line);
        if (text.empty() || text[0] == '#') return;
        if (text[0] == '>') return StartAnswer(Trim(text.substr(1)));
        if (text[0] == '<') return AddAnswerLine(line.substr(line.find('<') + 1));
        const std::size_t blank = text.find(' ');
        const std::string word = text.substr(0, blank);
        const std::string rest = blank == text.npos ? "" : Trim(text.substr(blank));
        if (word == "when") return SetCondition(rest);
        if (word == "delay") return SetDelay(rest);
        answer_ = nullptr;
        if (word == "include") return Include(rest, depth);
        if (word == "context") return AddContext(rest);
        if (word == "at") return AddDriveStep(rest);
        AddSetting(text);
    }

    void Include(const std::string& name, int depth) {
        if (depth == kDeepestInclude) Fail("too many includes, one in the other");
        if (name.empty() || name.find('/') != name.npos)
            Fail("include needs the name of a profile");
        // Beside this one, or else one of those that the simulator knows by name.
        const std::string sibling = path_.substr(0, path_.rfind('/') + 1) + name + ".profile";
        const std::string known = ProfileDirectory() + "/" + name + ".profile";
        ReadFile(IsFile(sibling) || !IsFile(known) ? sibling : known, depth + 1);
    }

    void AddSetting(const std::string& text) {
        const std::size_t equals = text.find('=');
        if (equals == text.npos) Fail("not understood: " + text);
        const std::string name = Trim(text.substr(0, equals));
        if (name.empty() || name.find(' ') != name.npos) Fail("not the name of a setting");
        if (IsLiveValue(name)) Fail(name + " is a live value, it cannot be set");
        profile_->settings[name] = Unescape(Trim(text.substr(equals + 1)));
    }

    void AddContext(const std::string& text) {
        const auto words = SplitWords(text);
        if (!words || words->size() != 3) Fail("context needs a number, a type and an APN");
        const auto number = ParseInt((*words)[0]);
        if (!number || *number < 1 || *number > 16) Fail("context number must be 1 to 16");
        profile_->contexts[*number] = {(*words)[1], (*words)[2], "0.0.0.0"};
    }

    void AddDriveStep(const std::string& text) {
        const std::size_t blank = text.find(' ');
        const auto at = ParseDuration(text.substr(0, blank));
        if (!at || blank == text.npos) Fail("a step needs a time and what happens");
        if (!profile_->drive.empty() && profile_->drive.back().at > *at) {
            Fail("steps must be in order of time");
        }
        const std::string control = Trim(text.substr(blank));
        if (control == "repeat" && *at == 0) Fail("a drive cannot repeat without end at once");
        profile_->drive.push_back({*at, control});
    }

    void StartAnswer(const std::string& text) {
        std::string command = NormaliseCommand(text);
        if (command.empty()) Fail("no command");
        const bool is_pattern = command.back() == '*' && command != "*";
        if (is_pattern) command.pop_back();
        auto& answers = is_pattern ? PatternAnswers(command) : profile_->answers[command];
        // The first answer to a command in this file replaces what an included file said.
        if (answered_.insert({NormaliseCommand(text), path_}).second) answers.clear();
        answer_ = &answers.emplace_back();
        have_result_ = false;
    }

    std::vector<ScriptedAnswer>& PatternAnswers(const std::string& start) {
        for (auto& [known, answers] : profile_->patterns) {
            if (known == start) return answers;
        }
        return profile_->patterns.emplace_back(start, std::vector<ScriptedAnswer>()).second;
    }

    ScriptedAnswer& Current() {
        if (answer_ == nullptr) Fail("there is no command above this line");
        return *answer_;
    }

    void SetCondition(const std::string& text) {
        const std::size_t equals = text.find('=');
        if (equals == text.npos || equals == 0) Fail("a condition reads NAME=VALUE");
        const std::string name = Trim(text.substr(0, equals));
        Current().when.emplace_back(name, Trim(text.substr(equals + 1)));
        mentioned_.emplace_back(name, Place());
    }

    void SetDelay(const std::string& text) {
        const auto delay = ParseDuration(text);
        if (!delay) Fail("not a duration: " + text);
        Current().delay = *delay;
    }

    void AddAnswerLine(const std::string& text) {
        ScriptedAnswer& answer = Current();
        if (have_result_) Fail("a line behind the final result");
        const std::string line = Unescape(StartsWith(text, " ") ? text.substr(1) : text);
        if (IsFinalResult(line)) {
            answer.result = line;
            have_result_ = true;
        } else {
            MentionValues(line);
            answer.lines.push_back(line);
        }
    }

    void MentionValues(const std::string& line) {
        for (std::size_t at = line.find('{'); at != line.npos; at = line.find('{', at + 1)) {
            const std::size_t close = line.find('}', at);
            if (close == line.npos) Fail("a brace is left open");
            mentioned_.emplace_back(line.substr(at + 1, close - at - 1), Place());
        }
    }

    Profile* profile_;
    ScriptedAnswer* answer_ = nullptr;  // the answer that the next lines belong to
    bool have_result_ = false;
    std::string path_;
    int line_number_ = 0;
    std::set<std::pair<std::string, std::string>> answered_;      // command and file
    std::vector<std::pair<std::string, std::string>> mentioned_;  // value and place
};

}  // namespace

void SetProfileDirectory(const std::string& directory) {
    g_profile_directory = directory;
}

std::string ModelNames() {
    std::string names;
    for (const cards::Model& model : cards::kModels) {
        names += (names.empty() ? "" : ", ") + std::string(model.name);
    }
    return names;
}

Profile LoadProfile(const std::string& path_or_name) {
    const bool is_path = path_or_name.find_first_of("/.") != path_or_name.npos;
    const std::string path =
        is_path ? path_or_name : ProfileDirectory() + "/" + path_or_name + ".profile";
    if (!is_path && !IsFile(path)) {
        throw std::runtime_error(path + ": cannot be read; the models are " + ModelNames());
    }
    Profile profile;
    const std::string file = path.substr(path.rfind('/') + 1);
    profile.name = file.substr(0, file.rfind('.'));
    Reader reader(&profile);
    reader.ReadFile(path, 0);
    reader.CheckMentionedNames();
    return profile;
}

}  // namespace sim

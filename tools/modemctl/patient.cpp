#include "modemctl/patient.h"

#include <algorithm>
#include <cctype>

#include "state/cards.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kMostRecords = 20000;
constexpr long long kLookBack = 86400;  // seconds
// Where the settings of the start stand; the first that names a device counts.
constexpr const char* kOrderFiles[] = {
    "/etc/default/modemd",
    "/etc/systemd/system/modemd.service.d/override.conf",
    "/etc/systemd/system/modemd.service",
    "/lib/systemd/system/modemd.service",
    "/usr/lib/systemd/system/modemd.service",
    "/etc/init.d/modemd",
    "/etc/modemd.init",
    "/etc/inittab",
};

std::vector<std::string> SplitAtBlanks(const std::string& text) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : text + " ") {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            if (c != '"' && c != '\'') word += c;
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

std::string WithoutComments(const std::string& text) {
    std::string kept;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        const std::size_t first = line.find_first_not_of(" \t");
        if (first != std::string::npos && line[first] != '#') kept += line + "\n";
        start = end + 1;
    }
    return kept;
}

void TakeCard(const std::string& option, StartOrder& order) {
    if (const cards::Model* card = cards::ModelOfOption(option)) order.card = card->name;
}

StartOrder FindOrder(const Patient& patient) {
    StartOrder order;
    const std::string proc = Format("/proc/%d", patient.snapshot.pid);
    if (patient.Runs() && ReadOrder(WordsOf(patient.tree, patient.snapshot.pid), order)) {
        order.source = "the running daemon";
        const std::string environment =
            std::string(1, '\0') + patient.tree.Read(proc + "/environ", AnyText).text;
        const std::string label = std::string(1, '\0') + "PATH=";
        const std::size_t found = environment.find(label);
        if (found != std::string::npos) order.path = environment.c_str() + found + label.size();
        return order;
    }
    for (const char* const file : kOrderFiles) {
        const TextFile text = patient.tree.Read(file, AnyText);
        if (text.text.empty()) continue;
        if (!ReadOrder(SplitAtBlanks(WithoutComments(text.text)), order)) continue;
        order.source = file;
        return order;
    }
    return order;
}

}  // namespace

const LogRecord* Patient::NewestLine(const std::string& start) const {
    for (auto record = log.rbegin(); record != log.rend(); ++record) {
        if (record->text.compare(0, start.size(), start) == 0) return &*record;
    }
    return nullptr;
}

std::vector<std::string> WordsOf(const Tree& tree, int pid) {
    std::vector<std::string> words;
    const std::string text = tree.Read(Format("/proc/%d/cmdline", pid), AnyText).text;
    for (std::size_t start = 0; start < text.size();) {
        words.emplace_back(text.c_str() + start);
        start += words.back().size() + 1;
    }
    return words;
}

bool ReadOrder(const std::vector<std::string>& words, StartOrder& order) {
    for (std::string word : words) {
        // "Environment=CARD=-E362 DEVICE=/dev/ttyUSB0", "CARD=E362", "-E362", "/dev/ttyUSB0"
        if (word.compare(0, 12, "Environment=") == 0) word.erase(0, 12);
        if (word.compare(0, 5, "CARD=") == 0) {
            TakeCard(word, order);
        } else if (word.compare(0, 7, "DEVICE=") == 0) {
            order.device = word.substr(7);
        } else if (word[0] == '-') {
            TakeCard(word, order);
        } else if (word.compare(0, 5, "/dev/") == 0 && word != "/dev/null" &&
                   order.device.empty()) {
            order.device = word;
        }
    }
    return !order.device.empty();
}

Patient MeetPatient(const Tree& tree, std::time_t now) {
    Patient patient;
    patient.tree = tree;
    patient.snapshot = TakeSnapshot(tree, now);
    LogRequest request;
    request.now = now;
    request.since = now - kLookBack;
    std::string complaint;
    patient.log = RecentRecords(tree, request, kMostRecords, complaint);
    patient.has_log = complaint.empty();
    patient.order = FindOrder(patient);
    return patient;
}

}  // namespace modemctl

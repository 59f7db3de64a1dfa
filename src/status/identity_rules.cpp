// One function for each way in which a value stands in an answer.

#include "status/identity_rules.h"

#include "modem/answer.h"
#include "state/settings.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

// The trimmed rest of each line that holds the label goes to `use`.
template <typename Use>
void ForEachLabelled(const cStringTokenizer& lines, const char* label, Use use) {
    for (const std::string& line : lines) {
        LogChecking(line);
        if (!Contains(line, label)) continue;
        LogHit(Hit::kQuotedAndCleaned, label);
        std::string rest = Behind(line, label);
        Trim(rest);
        use(rest);
    }
}

// What stands between the first two `mark` characters of the line. False when there are not two.
bool BetweenMarks(const std::string& line, char mark, const char* name, std::string& value) {
    const auto first = line.find(mark);
    if (first == std::string::npos) return false;
    const auto start = first + 1;
    LogAbove(1, "DEBUG: Found first %s at pos %d", name, static_cast<int>(start));
    const auto second = line.find(mark, start);
    if (second == std::string::npos) return false;
    LogAbove(1, "DEBUG: Found 2nd %s at pos %d", name, static_cast<int>(second));
    value = line.substr(start, second - start);
    return true;
}

}  // namespace

void TakeBehindLabel(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    const std::string* line = FindLine(lines, rule.needle);
    if (line == nullptr) return;
    LogHit(Hit::kCleaned, rule.logged_label);
    std::string value = Behind(*line, rule.needle);
    rule.clean(value);
    field = value;
}

void TakeUnechoedLine(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    for (const std::string& line : lines) {
        LogChecking(line);
        if (line.size() <= rule.longer_than || Contains(line, rule.needle)) continue;
        std::string value = line;
        rule.clean(value);
        LogCleaned(value);
        field = value;
        return;
    }
}

void TakeModel(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    TakeUnechoedLine(rule, lines, field);
    if (!Contains(field, "MC7700")) return;
    Log("Setting Specific model number to MC7700");
    g_i_FirstHealthReport = 0;
}

void TakeNumberLine(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    for (const std::string& line : lines) {
        LogChecking(line);
        if (line.size() <= rule.longer_than) continue;
        LogHit(Hit::kCleaned, rule.needle);
        std::string value = line;
        CleanWhiteSpace(value);
        LogCleaned(value);
        if (!IsInteger(value)) continue;
        LogAbove(1, "DEBUG: line is a number");
        field = value;
        return;
    }
}

void TakeSubscriberNumber(const AnswerRule& rule, const cStringTokenizer& lines,
                          std::string& field) {
    const std::string* line = FindLine(lines, rule.needle);
    if (line == nullptr) return;
    LogAbove(1, "DEBUG: Found +CNUM: line");
    std::string number;
    if (!BetweenMarks(*line, ',', "COMMA", number)) return;
    RemoveChar(number, '"');
    if (IsInteger(number)) {
        field = number;
    } else {
        LogDebug("DEBUG: Returned non numeric MDN '%s'", number.c_str());
    }
}

void TakePriId(const AnswerRule&, const cStringTokenizer& lines, std::string& field) {
    ForEachLabelled(
        lines, "PRI Part Number:", [&](const std::string& part_number) { field = part_number; });
    ForEachLabelled(lines,
                    "Revision:", [&](const std::string& revision) { field += " " + revision; });
}

void TakeQuotedVersion(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    const std::string* line = FindLine(lines, rule.needle);
    if (line == nullptr) return;
    LogAbove(1, "DEBUG: Found ^HVER: line");
    BetweenMarks(*line, '"', "Quote", field);
}

void TakeContexts(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field) {
    for (const std::string& line : lines) {
        LogChecking(line);
        if (!Contains(line, rule.needle)) continue;
        LogHit(Hit::kPlain, rule.needle);
        cStringTokenizer fields(Behind(line, rule.needle), ',');
        if (fields.GetTokenCount() <= 3) continue;
        std::string& id = fields[0];
        std::string& apn = fields[2];
        CleanWhiteSpace(id);
        CleanWhiteSpace(apn);
        RemoveChar(apn, '"');
        LogAbove(1, "DEBUG: got Context: %s, APN: %s", id.c_str(), apn.c_str());
        field += id + ":" + apn + "\n";
    }
}

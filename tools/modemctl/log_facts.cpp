#include "modemctl/log_facts.h"

#include <cstring>

namespace modemctl {

namespace {

constexpr char kStarting[] = "v%s starting";
constexpr char kSecondCopy[] = "Another %s process is already running, exiting";

bool IsOf(const LogRecord& record, const char* format) {
    const LogMatch match = MatchLogLine(record.text);
    return match.line != nullptr && std::strcmp(match.line->format, format) == 0;
}

// Without the starts of second copies, which stand in the middle of a run.
std::vector<LogRecord> OwnLines(const std::vector<LogRecord>& records,
                                std::vector<LogRecord>& second_copies) {
    std::vector<LogRecord> own;
    for (const LogRecord& record : records) {
        if (!IsOf(record, kSecondCopy)) {
            own.push_back(record);
            continue;
        }
        second_copies.push_back(record);
        for (auto start = own.rbegin(); start != own.rend(); ++start) {
            if (!IsOf(*start, kStarting)) continue;
            own.erase(std::next(start).base());
            break;
        }
    }
    return own;
}

}  // namespace

int LogFact::Streak(long long gap) const {
    int streak = 1;
    for (std::size_t i = records.size() - 1; i > 0; --i, ++streak) {
        if (records[i].when - records[i - 1].when > gap) break;
    }
    return streak;
}

LogFacts::LogFacts(const std::vector<LogRecord>& records) {
    for (const LogRecord& record : OwnLines(records, second_copies_)) {
        if (IsOf(record, kStarting)) facts_.clear();
        Add(record);
    }
}

void LogFacts::Add(const LogRecord& record) {
    const LogMatch match = MatchLogLine(record.text);
    if (match.line == nullptr) return;
    newest_ = match.line->format;
    LogFact& fact = facts_[newest_];
    fact.records.push_back(record);
    fact.parts = match.parts;
}

const LogFact* LogFacts::Find(const char* format) const {
    const auto found = facts_.find(format);
    return found != facts_.end() ? &found->second : nullptr;
}

bool LogFacts::IsRecent(const char* format, std::time_t now, long long seconds) const {
    const LogFact* const fact = Find(format);
    return fact != nullptr && now - fact->Newest().when <= seconds;
}

}  // namespace modemctl

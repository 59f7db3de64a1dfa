// What the log says of the daemon's newest run, by kind of line.
#pragma once

#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "modemctl/log_lines.h"
#include "modemctl/log_source.h"

namespace modemctl {

// All lines of one kind in the newest run.
struct LogFact {
    std::vector<LogRecord> records;
    std::vector<std::string> parts;  // of the newest

    const LogRecord& Newest() const { return records.back(); }
    // How many of the newest follow each other with no more than `gap` seconds between them.
    int Streak(long long gap) const;
};

class LogFacts {
  public:
    LogFacts() = default;
    explicit LogFacts(const std::vector<LogRecord>& records);

    // Null when the run has no such line. The format as in the table of log lines.
    const LogFact* Find(const char* format) const;
    bool Has(const char* format) const { return Find(format) != nullptr; }
    // True when there is such a line, not older than `seconds`.
    bool IsRecent(const char* format, std::time_t now, long long seconds) const;
    // True when the newest line that says more than a detail begins with this.
    bool EndsWith(const char* format) const { return newest_ == format; }

    bool Empty() const { return facts_.empty(); }
    // A start that found another copy and ended; it is no run of its own.
    const std::vector<LogRecord>& SecondCopies() const { return second_copies_; }

  private:
    void Add(const LogRecord& record);

    std::map<std::string, LogFact> facts_;
    std::vector<LogRecord> second_copies_;
    std::string newest_;  // format of the newest line that is known
};

}  // namespace modemctl

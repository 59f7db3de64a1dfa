// The daemon's lines in the system log, wherever this router keeps it.
#pragma once

#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "modemctl/tree.h"

namespace modemctl {

struct LogRecord {
    std::time_t when = 0;  // 0: the line tells no time
    std::string text;      // what the daemon said
};

// One line of a system log: classic ("Mar 14 09:15:02 router user.notice modemd: text"), ISO
// ("2026-03-14T09:15:02+00:00 router modemd[42]: text"), or as logread shows it ("Sat Mar 14
// 09:15:02 2026 user.notice modemd: text"). False for a line of another program, and for one that
// only holds such a line behind a foreign head. A classic line tells no year: that of `now`, or
// the one before when it would lie in the future.
bool ParseLogLine(const std::string& line, std::time_t now, LogRecord& record);

// Takes each record in turn; returns false to stop.
using RecordTaker = std::function<bool(const LogRecord& record)>;

struct LogRequest {
    std::string file;  // "" for the router's own log, "-" for standard input
    std::time_t since = 0;
    std::time_t now = 0;
    bool follow = false;
};

// False, with a complaint, when there is no log to read.
bool ReadLog(const Tree& tree, const LogRequest& request, const RecordTaker& take,
             std::string& complaint);

// The newest records, at most so many.
std::vector<LogRecord> RecentRecords(const Tree& tree, LogRequest request, std::size_t most,
                                     std::string& complaint);

// One entry of "journalctl -o export", which may hold line ends and any byte. False at the end.
bool ReadExportEntry(std::FILE* stream, LogRecord& record);

}  // namespace modemctl

// What the daemon's log lines mean: each one it writes at debug level 0, and those of the higher
// levels by their kind.
#pragma once

#include <string>
#include <vector>

namespace modemctl {

enum class LogLevel {
    kDetail,   // part of something that another line tells
    kNews,     // as it should be
    kGood,     // a trouble has ended
    kWarning,  // once in a while is nothing
    kBad,      // somebody should look
};

enum class LogTopic {
    kDaemon,
    kPort,
    kModem,
    kService,
    kCall,
    kLink,
    kClock,
    kConfig,
    kSms,
    kDebug
};

struct LogLine {
    // As the daemon's source has it: %s and %d stand for what varies.
    const char* format;
    LogLevel level;
    LogTopic topic;
    const char* plain;    // in plain words; {1} is what the first %s or %d stands for
    const char* meaning;  // for --explain
    const char* next;     // what comes next, what a person can do; empty for nothing
    // Lines that differ only in what varies count as repeats.
    bool varies_freely = false;
};

const char* TopicWord(LogTopic topic);
const char* LevelWord(LogLevel level);

struct LogMatch {
    const LogLine* line = nullptr;  // null: none of ours
    std::vector<std::string> parts;

    // One of the entry's texts with the parts in their places; foreign text in it.
    std::string Fill(const char* words) const;
    std::string Plain() const { return Fill(line->plain); }
};

// The entry whose fixed text is the longest of those that fit the whole text.
LogMatch MatchLogLine(const std::string& text);
// True when the text fits the format; `parts` gets what stands for each %s, %d and the like.
bool MatchesFormat(const char* format, const std::string& text, std::vector<std::string>& parts);

const std::vector<LogLine>& AllLogLines();

}  // namespace modemctl

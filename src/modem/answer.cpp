// Walking through the lines of an answer, and telling the log about it.

#include "modem/answer.h"

#include "support/system_log.h"
#include "support/text.h"

cStringTokenizer LinesOf(const std::string& answer) {
    return {answer, '\n'};
}

cStringTokenizer CountedLinesOf(const std::string& answer) {
    cStringTokenizer lines = LinesOf(answer);
    LogAbove(1, "DEBUG: token count is : %d", static_cast<int>(lines.GetTokenCount()));
    return lines;
}

void LogChecking(const std::string& line) {
    LogAbove(1, "DEBUG: checking line : %s", line.c_str());
}

void LogCleaned(const std::string& line) {
    LogAbove(1, "DEBUG: line after cleaning (length %d): %s", static_cast<int>(line.size()),
             line.c_str());
}

void LogHit(Hit hit, const char* label) {
    switch (hit) {
        case Hit::kPlain:
            return LogAbove(1, "DEBUG: line looks like %s", label);
        case Hit::kCleaned:
            return LogAbove(1, "DEBUG: line looks like %s, cleaning white space", label);
        case Hit::kQuotedAndCleaned:
            return LogAbove(1, "DEBUG: line looks like '%s', cleaning white space", label);
    }
}

const std::string* FindLine(const cStringTokenizer& lines, std::string_view text) {
    for (const std::string& line : lines) {
        LogChecking(line);
        if (Contains(line, text)) return &line;
    }
    return nullptr;
}

std::string Behind(const std::string& line, std::string_view label) {
    return line.substr(line.find(label) + label.size());
}

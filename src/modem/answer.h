// The lines of an answer: how it is taken apart, what the log shows of it, and how a value is found
// in it. Every log line of this room is written above debug level 1.
//
// A modem ends its lines with CR LF. An answer is split at the line feeds, so each line keeps its
// carriage return until it is cleaned, and an empty piece follows the last one.
#pragma once

#include <string>
#include <string_view>

#include "support/string_tokenizer.h"

cStringTokenizer LinesOf(const std::string& answer);
// The same, and how many there are.
cStringTokenizer CountedLinesOf(const std::string& answer);

// Each line that is looked at, before anything is done to it.
void LogChecking(const std::string& line);
// What white space and line ends have been taken from.
void LogCleaned(const std::string& line);

// How the log tells a line that was looked for. The texts have grown one by one, and field logs are
// searched for each of them.
enum class Hit {
    kPlain,            // DEBUG: line looks like LABEL
    kCleaned,          // DEBUG: line looks like LABEL, cleaning white space
    kQuotedAndCleaned  // DEBUG: line looks like 'LABEL', cleaning white space
};
void LogHit(Hit hit, const char* label);

// The first line that holds the text, null when none does. Logs the lines on the way.
const std::string* FindLine(const cStringTokenizer& lines, std::string_view text);

// The rest of the line behind a label that it holds.
std::string Behind(const std::string& line, std::string_view label);

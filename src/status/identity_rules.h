// How an identity query finds its value in the lines of an answer.
//
// Every rule visits the lines in order and leaves the field as it was when no line qualifies.
#pragma once

#include <cstddef>
#include <string>

#include "support/string_tokenizer.h"

struct AnswerRule {
    void (*take)(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
    const char* needle = "";      // the label, the command's echo, or what the line looks like
    std::size_t longer_than = 0;  // characters, the line's carriage return included
    void (*clean)(std::string&) = nullptr;
    const char* logged_label = "";  // what the debug line of a hit names
};

// The rest of the first line that holds the label, cleaned.
void TakeBehindLabel(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// The first line that is long enough and does not hold the command, cleaned.
void TakeUnechoedLine(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// The same; an MC7700 changes what the health report looks for.
void TakeModel(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// The first line that is long enough and, its white space removed, a number.
void TakeNumberLine(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// +CNUM: the second comma-separated field of the first line, when it is a number.
void TakeSubscriberNumber(const AnswerRule& rule, const cStringTokenizer& lines,
                          std::string& field);
// The part number, a blank, and the revision, each from the last line that tells it.
void TakePriId(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// The text between the two quotes of the first ^HVER: line.
void TakeQuotedVersion(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);
// Appends "id:APN" and a line feed for every +CGDCONT: line.
void TakeContexts(const AnswerRule& rule, const cStringTokenizer& lines, std::string& field);

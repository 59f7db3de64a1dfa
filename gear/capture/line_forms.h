// The forms of the lines that modems say and hear, see places.h.
#pragma once

#include <regex>
#include <string>
#include <vector>

namespace capture {

enum class Held {  // by a group of a form
    kSerial,
    kSimCard,
    kSubscriber,
    kNumber,
    kHexCell,
    kDecimalCell,
    kApn,
    kAddress,
    kText,
};

struct LineForm {
    std::regex command;       // whose answer it is
    std::regex line;          // the whole of it
    std::vector<Held> holds;  // one for each group
    int text_lines;           // so many lines behind it are a message
};

constexpr int kManyLines = 1 << 20;  // until the next header or the result

// The first that fits counts.
const std::vector<LineForm>& AnswerForms();
// Forms that hold nothing are compared in upper case; `command` is not looked at.
const std::vector<LineForm>& CommandForms();

}  // namespace capture

// Which of the bytes of a dialogue belong to somebody: a table of line forms, each with the places
// in it that hold an identity. Whatever has none of these forms is refused, unless nothing in it
// could be an identity.
//
// Replacements have the length of what they replace, so that every answer is cut as it was.
#pragma once

#include <regex>
#include <set>
#include <string>
#include <vector>

#include "capture/dialogue.h"
#include "capture/line_forms.h"
#include "capture/network_numbers.h"
#include "modemctl/anonymize.h"

namespace capture {

// A text that nobody knows to be harmless.
struct Unplaced {
    Place place;
    std::string text;
    std::string command;  // in whose answer it stands
};

class Placer {
  public:
    // Words in `harmless` are kept wherever they stand.
    Placer(const modemctl::Anonymizer::Key& key, std::set<std::string> harmless);

    // Replaces the identities in the dialogue. Returns what could not be placed; the dialogue must
    // not be written then.
    std::vector<Unplaced> Replace(Dialogue& dialogue);

    // The last look at what is about to be written.
    bool Leaks(const std::string& text) const { return anonymizer_.Leaks(text); }

  private:
    struct Piece;  // a line of an answer
    void ReplaceCommand(Exchange& exchange, const Place& place);
    void ReplaceAnswer(Exchange& exchange, const Source& source, const std::string& command);
    std::string ReplaceLine(const std::string& line, const Piece& piece);
    std::string ReplaceGroups(const LineForm& form, const std::string& line,
                              const std::smatch& match);
    std::string ReplaceBody(const std::string& body);
    std::string ReplaceValue(Held held, const std::string& value);
    void CheckHarmless(const std::string& line, const Piece& piece);

    modemctl::Anonymizer anonymizer_;
    std::set<std::string> harmless_;
    NetworkNumbers network_;
    std::vector<Unplaced> unplaced_;
    bool body_follows_ = false;  // the last command asked for a message text
    int message_lines_ = 0;      // so many of the next lines of the answer are a message's
};

}  // namespace capture

// A page of rows for people: a label, a value in its tone, and how old it is, aligned.
#pragma once

#include <string>
#include <vector>

#include "modemctl/snapshot.h"
#include "modemctl/terminal.h"

namespace modemctl {

constexpr int kLabelColumns = 14;

class Page {
  public:
    explicit Page(const Terminal& terminal) : terminal_(terminal) {}

    // The text is shown as it is: foreign text goes through Terminal::Show before.
    void Row(const std::string& label, const std::string& text, Tone tone = Tone::kPlain,
             const std::string& age = "");
    // A row whose text is already painted and takes `columns` columns.
    void PaintedRow(const std::string& label, const std::string& painted, std::size_t columns,
                    const std::string& age = "");
    void Line(const std::string& text, Tone tone = Tone::kPlain);

    // Foreign, or what to say in its place; `tone` is the tone of a value that is told.
    std::string Words(const Value& value) const;

    const std::string& Text() const { return text_; }

  private:
    const Terminal& terminal_;
    std::string text_;
};

// What stands for a value that is not told: "not published", "not told yet", "told nothing".
const char* MissingWords(Told told);

}  // namespace modemctl

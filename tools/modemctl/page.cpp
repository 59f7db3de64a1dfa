#include "modemctl/page.h"

#include "modemctl/unicode.h"

namespace modemctl {

namespace {

constexpr std::size_t kAgeColumns = 12;

}  // namespace

const char* MissingWords(Told told) {
    switch (told) {
        case Told::kAbsent:
            return "not published";
        case Told::kUnknown:
            return "not told yet";
        case Told::kEmpty:
            return "told nothing";
        case Told::kValue:
            break;
    }
    return "";
}

void Page::Row(const std::string& label, const std::string& text, Tone tone,
               const std::string& age) {
    const auto room = static_cast<std::size_t>(terminal_.columns) - kLabelColumns -
                      (age.empty() ? 0 : kAgeColumns);
    const std::string cut = Cut(text, room);
    PaintedRow(label, terminal_.Paint(tone, cut), Columns(cut), age);
}

void Page::PaintedRow(const std::string& label, const std::string& painted, std::size_t columns,
                      const std::string& age) {
    text_ += terminal_.Paint(Tone::kBold, Padded(label, kLabelColumns)) + painted;
    if (!age.empty()) {
        const auto width = static_cast<std::size_t>(terminal_.columns);
        const std::size_t taken = kLabelColumns + columns + Columns(age);
        text_ += std::string(taken < width ? width - taken : 1, ' ');
        text_ += terminal_.Paint(Tone::kDim, age);
    }
    text_ += '\n';
}

void Page::Line(const std::string& text, Tone tone) {
    const auto width = static_cast<std::size_t>(terminal_.columns);
    text_ += terminal_.Paint(tone, Cut(text, width)) + '\n';
}

std::string Page::Words(const Value& value) const {
    return value.IsTold() ? terminal_.Show(value.text) : MissingWords(value.told);
}

}  // namespace modemctl

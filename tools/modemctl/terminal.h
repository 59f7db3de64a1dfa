// Where the output goes: how wide it is, and whether it shows colour and more than ASCII.
#pragma once

#include <string>

namespace modemctl {

enum class Tone { kPlain, kDim, kBold, kGood, kFair, kBad };
enum class ColourWish { kAuto, kAlways, kNever };

struct Terminal {
    bool interactive = false;  // a person may be looking
    bool colour = false;
    bool utf8 = false;
    int columns = 80;
    int rows = 24;

    // The text in its tone; the text alone without colour.
    std::string Paint(Tone tone, const std::string& text) const;
    // Foreign text, fit to be shown here.
    std::string Show(const std::string& foreign) const;
    // `filled` of `cells` cells; "####......" without UTF-8.
    std::string Bar(int filled, int cells) const;
};

// Standard output, asked for what it is. Colour only on a terminal, unless TERM is "dumb", and
// never with NO_COLOR; `wish` overrides the terminal, but not NO_COLOR.
Terminal StandardOutput(ColourWish wish);

// The size as the terminal tells it, or as COLUMNS and LINES say, or 80x24 as on a serial console.
void AskSize(int fd, Terminal& terminal);

}  // namespace modemctl

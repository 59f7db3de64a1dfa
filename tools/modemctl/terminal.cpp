#include "modemctl/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr int kUsualColumns = 80;
constexpr int kUsualRows = 24;
constexpr int kMostColumns = 1000;

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool LocaleIsUtf8() {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        std::string value = Environment(name);
        if (value.empty()) continue;
        ToLower(value);
        return Contains(value, "utf-8") || Contains(value, "utf8");
    }
    return false;
}

const char* Sequence(Tone tone) {
    switch (tone) {
        case Tone::kPlain:
            return "";
        case Tone::kDim:
            return "\x1b[2m";
        case Tone::kBold:
            return "\x1b[1m";
        case Tone::kGood:
            return "\x1b[32m";
        case Tone::kFair:
            return "\x1b[33m";
        case Tone::kBad:
            return "\x1b[31m";
    }
    return "";
}

int SizeOr(const char* variable, int usual) {
    const int value = ToInt(Environment(variable));
    return value > 0 ? std::min(value, kMostColumns) : usual;
}

}  // namespace

std::string Terminal::Paint(Tone tone, const std::string& text) const {
    if (!colour || tone == Tone::kPlain || text.empty()) return text;
    return Sequence(tone) + text + "\x1b[0m";
}

std::string Terminal::Show(const std::string& foreign) const {
    return Escaped(foreign, utf8);
}

std::string Terminal::Bar(int filled, int cells) const {
    std::string bar;
    for (int i = 0; i < cells; ++i) {
        if (i < filled) {
            bar += utf8 ? "\xe2\x96\x88" : "#";
        } else {
            bar += utf8 ? "\xe2\x96\x91" : ".";
        }
    }
    return bar;
}

void AskSize(int fd, Terminal& terminal) {
    winsize size = {};
    if (ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0) {
        terminal.columns = std::min<int>(size.ws_col, kMostColumns);
        terminal.rows = std::min<int>(size.ws_row, kMostColumns);
        return;
    }
    terminal.columns = SizeOr("COLUMNS", kUsualColumns);
    terminal.rows = SizeOr("LINES", kUsualRows);
}

Terminal StandardOutput(ColourWish wish) {
    Terminal terminal;
    terminal.interactive = isatty(STDOUT_FILENO) == 1;
    const bool able = terminal.interactive && Environment("TERM") != "dumb";
    terminal.colour = wish == ColourWish::kAlways || (wish == ColourWish::kAuto && able);
    if (!Environment("NO_COLOR").empty()) terminal.colour = false;
    terminal.utf8 = LocaleIsUtf8();
    AskSize(STDOUT_FILENO, terminal);
    return terminal;
}

}  // namespace modemctl

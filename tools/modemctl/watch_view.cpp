#include "modemctl/watch_view.h"

#include <algorithm>

#include "modemctl/page.h"
#include "modemctl/signal.h"
#include "modemctl/status.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/string_tokenizer.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr const char* kPageNames[kWatchPages] = {"Overview", "Status", "Signal", "Events", "Why"};
constexpr char kKeys[] = "1-5 or arrows: page   + -: time scale   q: end";
constexpr int kGraphMargin = 9;  // columns left of the graph, for its scale
constexpr int kOverviewGraphRows = 5;
constexpr int kFewestRows = 8;

using Lines = std::vector<std::string>;

void Append(Lines& lines, const std::string& text) {
    for (const std::string& line : cStringTokenizer(text, '\n')) lines.push_back(line);
    if (!text.empty() && text.back() == '\n') lines.pop_back();
}

// The page at hand stands in brackets, so that it shows without colour, too. Where there is no
// room, the others are numbers only.
std::string PageBar(WatchPage page, bool all_names) {
    std::string bar;
    for (int i = 0; i < kWatchPages; ++i) {
        const bool here = static_cast<int>(page) == i;
        const std::string name = here || all_names ? std::string(" ") + kPageNames[i] : "";
        bar += Format(here ? "[%d%s] " : " %d%s  ", i + 1, name.c_str());
    }
    return bar;
}

std::string TitleBar(const WatchState& state, const Terminal& terminal) {
    const std::string clock = ShownTime(state.snapshot.now).substr(11);
    const auto width = static_cast<std::size_t>(terminal.columns);
    std::string bar = PageBar(state.page, true);
    if (bar.size() + clock.size() > width) bar = PageBar(state.page, false);
    const std::size_t room = width > clock.size() ? width - clock.size() : 0;
    return terminal.Paint(Tone::kBold, Cut(Padded(Cut(bar, room), room) + clock, width));
}

// The scale of the bar: the middle of each row as a share of a full signal.
std::string ScaleAt(int row, int rows) {
    return Format("%6d %% ", (row * 2 + 1) * 50 / rows);
}

void AddGraph(Lines& lines, const WatchState& state, const Terminal& terminal, int rows) {
    const int columns = std::max(10, terminal.columns - kGraphMargin);
    const Lines graph = state.history.Graph(terminal, columns, rows, state.column_seconds);
    for (int i = 0; i < rows; ++i) {
        const int row = rows - 1 - i;
        const bool labelled = i == 0 || row == 0;
        const std::string scale = labelled ? ScaleAt(row, rows) : std::string(kGraphMargin, ' ');
        lines.push_back(terminal.Paint(Tone::kDim, Padded(scale, kGraphMargin)) +
                        graph[static_cast<std::size_t>(i)]);
    }
    const char* const name = state.snapshot.card == Card::kLte ? "call" : "network";
    lines.push_back(terminal.Paint(Tone::kDim, Padded(name, kGraphMargin)) +
                    state.history.Strip(terminal, columns, state.column_seconds));
    const std::string span = ShownSpan(state.column_seconds * columns) + " ago";
    lines.push_back(terminal.Paint(
        Tone::kDim, std::string(kGraphMargin, ' ') +
                        Padded(span, static_cast<std::size_t>(columns - 3)) + "now"));
}

std::string EventLine(const Change& change, const Terminal& terminal) {
    const std::string time = change.when != 0 ? ShownTime(change.when).substr(11) : "        ";
    const auto room = static_cast<std::size_t>(std::max(terminal.columns - 10, 1));
    return terminal.Paint(Tone::kDim, time + "  ") +
           terminal.Paint(change.tone, Cut(terminal.Show(change.Words()), room));
}

void AddEvents(Lines& lines, const WatchState& state, const Terminal& terminal, int rows) {
    const auto most = static_cast<std::size_t>(std::max(rows, 0));
    const std::size_t count = std::min(most, state.changes.size());
    for (std::size_t i = state.changes.size() - count; i < state.changes.size(); ++i) {
        lines.push_back(EventLine(state.changes[i], terminal));
    }
}

// Of the status page, the rows that change while one looks.
void AddOverview(Lines& lines, const WatchState& state, const Session& session) {
    constexpr const char* kRows[] = {"Carrier", "Technology", "Signal",  "Registration",
                                     "Call",    "Address",    "Traffic", "Messages"};
    Terminal plain = session.terminal;
    plain.colour = false;
    Session colourless = session;
    colourless.terminal = plain;
    Lines all;
    Lines painted;
    Append(all, StatusPage(state.snapshot, colourless));
    Append(painted, StatusPage(state.snapshot, session));
    lines.push_back(painted.front());
    for (std::size_t i = 1; i < all.size() && i < painted.size(); ++i) {
        const bool wanted = std::any_of(std::begin(kRows), std::end(kRows), [&](const char* row) {
            return all[i].compare(0, std::string(row).size(), row) == 0;
        });
        if (wanted) lines.push_back(painted[i]);
    }
    lines.emplace_back();
    AddGraph(lines, state, session.terminal, kOverviewGraphRows);
    lines.emplace_back();
    const int left = session.terminal.rows - static_cast<int>(lines.size()) - 1;
    AddEvents(lines, state, session.terminal, left);
}

void AddSignalPage(Lines& lines, const WatchState& state, const Session& session) {
    const Signal signal = ReadSignal(state.snapshot.statistics);
    lines.push_back("Signal " +
                    std::string(signal.strength == Strength::kUnknown
                                    ? "has no reading"
                                    : StrengthWord(signal.strength)) +
                    (signal.rssi ? Format(", %lld dBm", *signal.rssi) : "") +
                    (signal.rsrp ? Format(", RSRP %g dBm", *signal.rsrp) : "") +
                    (signal.rsrq ? Format(", RSRQ %g dB", *signal.rsrq) : "") +
                    (signal.ecio ? Format(", Ec/Io %g dB", *signal.ecio) : ""));
    lines.emplace_back();
    const int rows = session.terminal.rows - static_cast<int>(lines.size()) - 4;
    AddGraph(lines, state, session.terminal, std::max(rows, 3));
}

}  // namespace

std::vector<std::string> DrawWatch(const WatchState& state, const Session& session) {
    const Terminal& terminal = session.terminal;
    Lines lines = {TitleBar(state, terminal), ""};
    switch (state.page) {
        case WatchPage::kOverview:
            lines.pop_back();
            AddOverview(lines, state, session);
            break;
        case WatchPage::kStatus:
            Append(lines, StatusPage(state.snapshot, session));
            break;
        case WatchPage::kSignal:
            AddSignalPage(lines, state, session);
            break;
        case WatchPage::kEvents:
            AddEvents(lines, state, terminal, terminal.rows - 3);
            break;
        case WatchPage::kWhy:
            Append(lines, state.why);
            break;
    }
    const auto rows = static_cast<std::size_t>(std::max(terminal.rows, kFewestRows));
    lines.resize(rows - 1);
    lines.push_back(
        terminal.Paint(Tone::kDim, Cut(kKeys, static_cast<std::size_t>(terminal.columns))));
    return lines;
}

}  // namespace modemctl

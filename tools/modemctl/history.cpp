#include "modemctl/history.h"

#include <algorithm>

namespace modemctl {

namespace {

constexpr std::size_t kMostSamples = 7200;  // four hours, one every two seconds
constexpr int kEighths = 8;
constexpr const char* kBlocks[] = {" ",
                                   "\xe2\x96\x81",
                                   "\xe2\x96\x82",
                                   "\xe2\x96\x83",
                                   "\xe2\x96\x84",
                                   "\xe2\x96\x85",
                                   "\xe2\x96\x86",
                                   "\xe2\x96\x87",
                                   "\xe2\x96\x88"};

const char* Cell(const Terminal& terminal, int eighths) {
    eighths = std::clamp(eighths, 0, kEighths);
    if (terminal.utf8) return kBlocks[eighths];
    if (eighths == 0) return " ";
    return eighths >= kEighths / 2 ? "#" : ".";
}

Tone ToneOf(int permille) {
    if (permille >= 580) return Tone::kGood;
    return permille >= 330 ? Tone::kFair : Tone::kBad;
}

// Cells of one tone are painted together: a slow line should not carry a sequence for each.
class PaintedLine {
  public:
    explicit PaintedLine(const Terminal& terminal) : terminal_(terminal) {}

    void Add(Tone tone, const char* cell) {
        if (tone != tone_) Close();
        tone_ = tone;
        run_ += cell;
    }

    std::string Finish() {
        Close();
        return line_;
    }

  private:
    void Close() {
        line_ += terminal_.Paint(tone_, run_);
        run_.clear();
    }

    const Terminal& terminal_;
    Tone tone_ = Tone::kPlain;
    std::string run_;
    std::string line_;
};

// Broken wins over holding: a short drop must not vanish in a wide column.
Hold Worse(Hold a, Hold b) {
    if (a == Hold::kBroken || b == Hold::kBroken) return Hold::kBroken;
    return a == Hold::kHolds || b == Hold::kHolds ? Hold::kHolds : a;
}

}  // namespace

void History::Add(const Sample& sample) {
    // A clock that was set back begins a new history.
    if (!samples_.empty() && sample.when < samples_.back().when) samples_.clear();
    samples_.push_back(sample);
    if (samples_.size() > kMostSamples) samples_.pop_front();
}

// The lowest signal of each column: a dip is what one looks for.
std::vector<History::Column> History::Columns(int columns, long long seconds) const {
    std::vector<Column> result(static_cast<std::size_t>(std::max(columns, 0)));
    if (samples_.empty()) return result;
    const long long newest = samples_.back().when / seconds;
    for (const Sample& sample : samples_) {
        const long long back = newest - sample.when / seconds;
        if (back >= columns) continue;
        Column& column = result[static_cast<std::size_t>(columns - 1 - back)];
        column.permille = !column.seen || column.permille < 0
                              ? sample.permille
                              : std::min(column.permille, std::max(sample.permille, 0));
        column.call = column.seen ? Worse(column.call, sample.call) : sample.call;
        column.seen = true;
    }
    return result;
}

std::vector<std::string> History::Graph(const Terminal& terminal, int columns, int rows,
                                        long long seconds) const {
    const std::vector<Column> all = Columns(columns, seconds);
    std::vector<std::string> lines;
    for (int row = rows - 1; row >= 0; --row) {
        PaintedLine line(terminal);
        for (const Column& column : all) {
            const int eighths = column.permille * rows * kEighths / 1000 - row * kEighths;
            if (!column.seen || (eighths < 1 && row > 0)) {
                line.Add(Tone::kPlain, " ");
            } else if (column.permille < 0) {
                line.Add(Tone::kDim, "?");
            } else {
                line.Add(ToneOf(column.permille), Cell(terminal, std::max(eighths, 1)));
            }
        }
        lines.push_back(line.Finish());
    }
    return lines;
}

std::string History::Strip(const Terminal& terminal, int columns, long long seconds) const {
    PaintedLine line(terminal);
    for (const Column& column : Columns(columns, seconds)) {
        if (!column.seen) {
            line.Add(Tone::kPlain, " ");
        } else if (column.call == Hold::kHolds) {
            line.Add(Tone::kGood, terminal.utf8 ? "\xe2\x96\x88" : "#");
        } else if (column.call == Hold::kBroken) {
            line.Add(Tone::kBad, terminal.utf8 ? "\xe2\x96\x81" : "_");
        } else {
            line.Add(Tone::kDim, ".");
        }
    }
    return line.Finish();
}

}  // namespace modemctl

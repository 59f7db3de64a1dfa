#include "page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "faults.h"

namespace recovery {

namespace {

// Whole seconds, since nobody waits for less.
long Seconds(Duration duration) {
    return static_cast<long>((duration + 500ms) / 1s);
}

std::string Shown(long seconds) {
    if (seconds < 120) return std::to_string(seconds) + " s";
    const long minutes = seconds / 60;
    const std::string rest = seconds % 60 == 0 ? "" : " " + std::to_string(seconds % 60) + " s";
    if (minutes < 120) return std::to_string(minutes) + " min" + rest;
    return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

template <typename Number>
struct Range {
    Number least;
    Number most;
    void Take(Number number) {
        least = std::min(least, number);
        most = std::max(most, number);
    }
};

std::string Shown(Range<Duration> range) {
    const long least = Seconds(range.least);
    const long most = Seconds(range.most);
    if (most == 0) return "at once";
    if (least == most) return Shown(least);
    if (most < 120) return std::to_string(least) + " to " + Shown(most);
    return Shown(least) + " to " + Shown(most);
}

std::string Shown(Range<std::size_t> range) {
    const std::string least = std::to_string(range.least);
    return range.least == range.most ? least : least + " to " + std::to_string(range.most);
}

template <typename Value>
std::string Gathered(const std::string& name, const std::vector<Lived>& lives,
                     std::map<std::string, Value> Lived::*values) {
    std::optional<Range<Value>> range;
    for (const Lived& lived : lives) {
        const auto found = (lived.*values).find(name);
        if (found == (lived.*values).end()) continue;
        if (!range) range = Range<Value>{found->second, found->second};
        range->Take(found->second);
    }
    return range ? Shown(*range) : "";
}

std::string Filled(std::string text, const std::vector<Lived>& lives) {
    for (auto open = text.find('{'); open != std::string::npos; open = text.find('{', open)) {
        const auto close = text.find('}', open);
        const std::string name = text.substr(open + 1, close - open - 1);
        std::string value = Gathered(name, lives, &Lived::times);
        if (value.empty()) value = Gathered(name, lives, &Lived::counts);
        EXPECT_NE(value, "") << "no story tells {" << name << "}";
        text.replace(open, close - open + 1, value);
        open += value.size();
    }
    return text;
}

struct Row {
    std::string text;
    Range<Duration> first;
    Range<std::size_t> count;
    Range<Duration> gap;
};

std::vector<Row> Merged(const std::vector<Lived>& lives) {
    std::vector<Row> rows;
    for (std::size_t life = 0; life < lives.size(); ++life) {
        for (const Lived::Line& line : lives[life].log) {
            auto row = std::find_if(rows.begin(), rows.end(),
                                    [&](const Row& one) { return one.text == line.text; });
            if (row == rows.end()) {
                const std::size_t before = life == 0 ? line.count : 0;
                rows.push_back({line.text,
                                {line.first, line.first},
                                {before, before},
                                {Duration::max(), Duration::zero()}});
                row = rows.end() - 1;
            }
            row->first.Take(line.first);
            row->count.Take(line.count);
            row->gap.least = std::min(row->gap.least, line.shortest_gap);
            row->gap.most = std::max(row->gap.most, line.longest_gap);
        }
        for (Row& row : rows) {
            const auto& log = lives[life].log;
            const bool came = std::any_of(log.begin(), log.end(),
                                          [&](const auto& line) { return line.text == row.text; });
            if (!came) row.count.Take(0);
        }
    }
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
        return Seconds(a.first.least) < Seconds(b.first.least);
    });
    return rows;
}

}  // namespace

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.id;
}

const std::vector<Fault>& Faults() {
    static const std::vector<Fault> faults = [] {
        std::vector<Fault> all;
        for (const auto chapter : {PortFaults, NetworkFaults, RouterFaults, DaemonFaults}) {
            const std::vector<Fault> more = chapter();
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    }();
    return faults;
}

std::string RowOf(const Fault& fault, const std::vector<Lived>& lives) {
    std::string causes;
    for (const Lived& lived : lives) {
        const std::string cause = lived.cause.empty() ? "" : "`" + lived.cause + "`";
        if (causes.find(cause) == std::string::npos) causes += (causes.empty() ? "" : ", ") + cause;
    }
    std::string row = "| [" + std::string(fault.title) + "](#" + fault.id + ") |";
    for (const char* column : {fault.noticed, fault.done, fault.back, fault.lost}) {
        row += " " + Filled(column, lives) + " |";
    }
    return row + " " + causes + " |\n";
}

std::string LinesOf(const Fault& fault, const std::vector<Lived>& lives) {
    std::string text = "### " + std::string(fault.id) + "\n\n`modemd " + fault.card +
                       "`: " + fault.title + ".\n\n";
    const std::vector<Row> rows = Merged(lives);
    if (rows.empty()) return text + "The log says nothing.\n";
    text += "| log line | first after | times | every |\n|---|---|--:|---|\n";
    for (const Row& row : rows) {
        const std::string gap = row.gap.most == Duration::zero() ? "" : Shown(row.gap);
        text += "| `" + row.text + "` | " + Shown(row.first) + " | " + Shown(row.count) + " | " +
                gap + " |\n";
    }
    return text;
}

}  // namespace recovery

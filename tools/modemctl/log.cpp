#include "modemctl/log.h"

#include <deque>

#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/log_fold.h"
#include "modemctl/log_lines.h"
#include "modemctl/log_source.h"
#include "modemctl/page.h"
#include "modemctl/time_text.h"
#include "modemctl/tones.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kUsualLines[] = "40";
constexpr std::size_t kLongestGroup = 16;  // two restarts of a call, with their debris
constexpr std::size_t kTopicColumns = 9;

std::string DayOf(std::time_t when) {
    return ShownTime(when).substr(0, 10);
}

std::string TimeOfDay(std::time_t when) {
    return when == 0 ? std::string(8, ' ') : ShownTime(when).substr(11);
}

// A foreign line is shown as it is; one of ours that nobody knows, too.
LogEvent EventOf(const LogRecord& record, const Terminal& terminal) {
    const LogMatch match = MatchLogLine(record.text);
    LogEvent event;
    event.when = record.when;
    const LogLevel level = match.line != nullptr ? match.line->level : LogLevel::kNews;
    const LogTopic topic = match.line != nullptr ? match.line->topic : LogTopic::kDebug;
    const std::string words = match.line != nullptr ? match.Plain() : record.text;
    event.tone = static_cast<int>(ToneOf(level));
    event.text = Padded(match.line != nullptr ? TopicWord(topic) : "?", kTopicColumns) +
                 terminal.Show(words);
    event.key =
        match.line != nullptr && match.line->varies_freely ? match.line->format : record.text;
    return event;
}

// The timeline, line by line: kept to the newest when there is no end to wait for, else printed.
class Timeline {
  public:
    Timeline(const Session& session, std::size_t most_lines, bool follow)
        : terminal_(session.terminal),
          most_lines_(most_lines),
          follow_(follow),
          folder_(follow ? 1 : kLongestGroup,
                  {[this](const LogEvent& event) { AddEvent(event); },
                   [this](std::size_t lines, long long times, std::time_t until) {
                       AddRepeats(lines, times, until);
                   }}) {}

    void Take(const LogRecord& record) {
        any_ = true;
        folder_.Take(EventOf(record, terminal_));
    }

    bool Finish() {
        folder_.Finish();
        for (const Line& line : lines_) PrintLine(line);
        lines_.clear();
        return any_;
    }

  private:
    struct Line {
        std::string day;
        std::string text;
    };

    void AddEvent(const LogEvent& event) {
        const auto room = static_cast<std::size_t>(terminal_.columns) - 10;
        const std::string time = terminal_.Paint(Tone::kDim, TimeOfDay(event.when));
        const std::string text =
            terminal_.Paint(static_cast<Tone>(event.tone),
                            terminal_.interactive ? Cut(event.text, room) : event.text);
        Add({event.when != 0 ? DayOf(event.when) : "", time + "  " + text});
    }

    void AddRepeats(std::size_t lines, long long times, std::time_t until) {
        const std::string what =
            lines == 1 ? "the same" : Format("the same %d lines", static_cast<int>(lines));
        std::string text = Format("          %s%s %lld time%s more", std::string(9, ' ').c_str(),
                                  what.c_str(), times, times == 1 ? "" : "s");
        if (until != 0) text += ", until " + TimeOfDay(until);
        Add({until != 0 ? DayOf(until) : "", terminal_.Paint(Tone::kDim, text)});
    }

    void Add(const Line& line) {
        if (follow_) return PrintLine(line);
        lines_.push_back(line);
        if (most_lines_ > 0 && lines_.size() > most_lines_) lines_.pop_front();
    }

    void PrintLine(const Line& line) {
        if (!line.day.empty() && line.day != day_) {
            day_ = line.day;
            Print(terminal_.Paint(Tone::kBold, day_) + "\n");
        }
        Print(line.text + "\n");
    }

    const Terminal& terminal_;
    const std::size_t most_lines_;
    const bool follow_;
    bool any_ = false;
    std::string day_;
    std::deque<Line> lines_;
    LogFolder folder_;
};

void PrintJson(const LogRecord& record) {
    const LogMatch match = MatchLogLine(record.text);
    JsonWriter json("modemctl.log/1");
    if (record.when != 0) json.Text("time", IsoTime(record.when));
    json.Text("line", record.text);
    json.Bool("known", match.line != nullptr);
    if (match.line != nullptr) {
        json.Text("topic", TopicWord(match.line->topic));
        json.Text("level", LevelWord(match.line->level));
        json.Text("plain", match.Plain());
    }
    Print(json.Finish() + "\n");
}

// Words, broken at blanks to fit behind the label.
void AddParagraph(Page& page, const char* label, const std::string& text, int columns) {
    for (const std::string& line : Wrapped(text, static_cast<std::size_t>(columns))) {
        page.Row(label, line);
        label = "";
    }
}

int Explain(const Session& session) {
    const std::string text = DaemonText(session.Value("--explain"), session.now);
    const LogMatch match = MatchLogLine(text);
    if (session.json) {
        JsonWriter json("modemctl.explain/1");
        json.Text("line", text);
        json.Bool("known", match.line != nullptr);
        if (match.line != nullptr) {
            json.Text("topic", TopicWord(match.line->topic));
            json.Text("level", LevelWord(match.line->level));
            json.Text("plain", match.Plain());
            json.Text("meaning", match.Fill(match.line->meaning));
            json.Text("next", match.Fill(match.line->next));
        }
        Print(json.Finish() + "\n");
    } else if (match.line == nullptr) {
        Print("No line of the daemon's.\n");
    } else {
        Page page(session.terminal);
        const int columns = session.terminal.columns - kLabelColumns;
        AddParagraph(page, "In short", session.terminal.Show(match.Plain()), columns);
        AddParagraph(page, "Meaning", session.terminal.Show(match.Fill(match.line->meaning)),
                     columns);
        if (match.line->next[0] != '\0') {
            AddParagraph(page, "Next", session.terminal.Show(match.Fill(match.line->next)),
                         columns);
        }
        Print(page.Text());
    }
    return match.line != nullptr ? kGood : kNoData;
}

int RunLog(Session& session) {
    if (session.Has("--explain")) return Explain(session);
    LogRequest request;
    request.now = session.now;
    request.follow = session.Has("--follow");
    if (!session.arguments.empty()) request.file = session.arguments[0];
    if (session.Has("--since") &&
        !ParseTime(session.Value("--since"), session.now, request.since)) {
        return UsageError("log",
                          "--since is a time, or how long ago: 15m, 2h, \"2026-03-14 09:00\"");
    }
    const std::string lines = session.Value("--lines", kUsualLines);
    if (lines.empty() || !IsInteger(lines) || ToInt(lines) < 0) {
        return UsageError("log", "--lines is a number; 0 for all");
    }
    Timeline timeline(session, static_cast<std::size_t>(ToInt(lines)), request.follow);
    bool any = false;
    const auto take = [&](const LogRecord& record) {
        any = true;
        if (session.json) {
            PrintJson(record);
        } else {
            timeline.Take(record);
        }
        return true;
    };
    std::string complaint;
    if (!ReadLog(session.tree, request, take, complaint)) {
        std::fprintf(stderr, "modemctl: %s\n", complaint.c_str());
        return kNoData;
    }
    timeline.Finish();
    return any ? kGood : kNoData;
}

}  // namespace

std::string DaemonText(const std::string& line, std::time_t now) {
    LogRecord record;
    return ParseLogLine(line, now, record) ? record.text : line;
}

const Subcommand kLogCommand = {
    "log",
    "[FILE|-]",
    "what the daemon said, as a timeline in plain words",
    "Reads the system log of this router (the journal, /var/log/messages or logread), a FILE of\n"
    "log lines, or standard input. Repeated lines, and groups of lines, are told once.",
    {{"--since", "TIME", "from then on: 15m, 2h, today, \"2026-03-14 09:00\""},
     {"--lines", "NUMBER", "the newest lines of the timeline (40; 0 for all)"},
     {"--follow", nullptr, "go on with what comes"},
     {"--explain", "LINE", "what this line means, and what comes next"}},
    {{"modemctl log --since 2h", "the last two hours"},
     {"modemctl log --explain \"Last qmi result was 'Data call failed. (14)'\"", "one line"},
     {"ssh router cat /var/log/messages | modemctl log -", "another router's log"}},
    1,
    RunLog,
};

}  // namespace modemctl

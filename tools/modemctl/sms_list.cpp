// modemctl sms list, failed and show: what is in the spool, for people and programs.
#include "modemctl/sms_list.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "modemctl/exit_code.h"
#include "modemctl/log_source.h"
#include "modemctl/page.h"
#include "modemctl/sms.h"
#include "modemctl/sms_text.h"
#include "modemctl/sms_wait.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kUsualMost[] = "100";
constexpr std::size_t kMostRecords = 20000;
constexpr std::size_t kPlaceColumns = 9;
constexpr std::size_t kAgeColumns = 12;
constexpr std::size_t kNumberColumns = 16;

// Why the daemon gave files up, as its log says; by the name before the failure.
std::map<std::string, std::string> FailureReasons(const Session& session,
                                                  const std::vector<SpoolEntry>& failed) {
    std::map<std::string, std::string> reasons;
    LogRequest request;
    request.now = session.now;
    std::string complaint;
    const auto records = RecentRecords(session.tree, request, kMostRecords, complaint);
    for (const SpoolEntry& entry : failed) {
        SendStory story(NameBeforeFailure(entry.name));
        for (const LogRecord& record : records) story.Take(record);
        if (story.fate() == Fate::kFailed || story.fate() == Fate::kRefused) {
            reasons[entry.name] = story.sign();
        }
    }
    return reasons;
}

std::string StateOf(const SpoolEntry& entry, const SpoolMessage& message) {
    if (entry.kind != EntryKind::kFile) return std::string("a ") + KindWord(entry.kind);
    if (message.readable == Readable::kUnfinished) return "not whole yet";
    return message.readable == Readable::kGood ? "" : "not a message";
}

void PrintEntry(const Session& session, const SpoolEntry& entry, const SpoolMessage& message) {
    const Terminal& terminal = session.terminal;
    const std::string state = StateOf(entry, message);
    const Tone tone = entry.place == SpoolPlace::kFailed ? Tone::kBad : Tone::kPlain;
    std::string line = terminal.Paint(tone, Padded(PlaceWord(entry.place), kPlaceColumns));
    line += Padded(ShownSpan(session.now - entry.changed), kAgeColumns);
    line += Padded(Cut(terminal.Show(message.number), kNumberColumns - 1), kNumberColumns);
    line += terminal.Show(entry.name) + "\n";
    const auto room = static_cast<std::size_t>(terminal.columns) - kPlaceColumns;
    const std::string text = state.empty() ? terminal.Show(message.text) : "(" + state + ")";
    Print(line + std::string(kPlaceColumns, ' ') +
          terminal.Paint(Tone::kDim, terminal.interactive ? Cut(text, room) : text) + "\n");
}

// The newest of a place, and how many are left out.
std::size_t KeepNewest(std::vector<SpoolEntry>& entries, std::size_t most) {
    if (most == 0 || entries.size() <= most) return 0;
    std::stable_sort(entries.begin(), entries.end(), [](const SpoolEntry& a, const SpoolEntry& b) {
        return a.changed < b.changed;
    });
    const std::size_t extra = entries.size() - most;
    entries.erase(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(extra));
    return extra;
}

int ListPlaces(Session& session, const std::vector<SpoolPlace>& places, bool with_reasons) {
    const std::string most = session.Value("--most", kUsualMost);
    if (most.empty() || !IsInteger(most) || ToInt(most) < 0) {
        return UsageError("sms", "--most is a number; 0 for all");
    }
    std::vector<SpoolEntry> shown;
    std::size_t left_out = 0;
    bool any_place = false;
    for (const SpoolPlace place : places) {
        std::vector<SpoolEntry> entries;
        any_place = ListSpool(session.tree, place, entries) || any_place;
        left_out += KeepNewest(entries, static_cast<std::size_t>(ToInt(most)));
        shown.insert(shown.end(), entries.begin(), entries.end());
    }
    std::map<std::string, std::string> reasons;
    if (with_reasons && !shown.empty()) reasons = FailureReasons(session, shown);

    JsonWriter json("modemctl.sms_list/1");
    json.Text("time", IsoTime(session.now));
    json.Number("left_out", static_cast<long long>(left_out));
    json.BeginArray("messages");
    for (const SpoolEntry& entry : shown) {
        const SpoolMessage message = ReadMessage(session.tree, entry);
        const auto reason = reasons.find(entry.name);
        if (session.json) {
            json.BeginElement();
            WriteMessage(json, entry, message, session.now);
            if (reason != reasons.end()) json.Text("reason", reason->second);
            json.End();
            continue;
        }
        PrintEntry(session, entry, message);
        if (reason != reasons.end()) {
            Print(std::string(kPlaceColumns, ' ') + session.terminal.Show(reason->second) + "\n");
        }
    }
    if (session.json) {
        Print(json.Finish() + "\n");
    } else if (left_out > 0) {
        Print(Format("and %d more: --most 0\n", static_cast<int>(left_out)));
    } else if (shown.empty()) {
        Print(any_place ? "No messages.\n" : "There is no spool.\n");
    }
    return any_place ? kGood : kNoData;
}

}  // namespace

void WriteMessage(JsonWriter& json, const SpoolEntry& entry, const SpoolMessage& message,
                  std::time_t now) {
    json.Text("place", PlaceWord(entry.place));
    json.Text("name", entry.name);
    json.Text("kind", JsonWord(KindWord(entry.kind)));
    json.Text("changed", IsoTime(entry.changed));
    json.Number("age", static_cast<long long>(now - entry.changed));
    json.Number("size", entry.size);
    json.Bool("whole", message.readable == Readable::kGood);
    if (message.readable != Readable::kGood) return;
    const bool received = entry.place == SpoolPlace::kReceived;
    json.Text(received ? "from" : "to", message.number);
    if (received) json.Text("network_time", message.time);
    json.Text("text", message.text);
    if (!received) json.Text("on_air", OnAir(message.text));
}

void PrintMessage(const Session& session, const SpoolEntry& entry, const SpoolMessage& message) {
    if (session.json) {
        JsonWriter json("modemctl.sms_message/1");
        WriteMessage(json, entry, message, session.now);
        Print(json.Finish() + "\n");
        return;
    }
    const Terminal& terminal = session.terminal;
    Page page(terminal);
    const bool received = entry.place == SpoolPlace::kReceived;
    page.Row("Name", std::string(PlaceWord(entry.place)) + "/" + terminal.Show(entry.name));
    page.Row(received ? "Received" : "Since", ShownTime(entry.changed), Tone::kPlain,
             ShownSpan(session.now - entry.changed));
    const std::string state = StateOf(entry, message);
    if (!state.empty()) {
        page.Row("Message", state, Tone::kBad);
        return Print(page.Text());
    }
    page.Row(received ? "From" : "To", terminal.Show(message.number));
    if (received) page.Row("Network time", terminal.Show(message.time));
    const char* label = "Text";
    // Line by line: each is escaped for itself, and no line of it looks like a row.
    const std::string text = received ? message.text : OnAir(message.text);
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = terminal.Show(text.substr(start, end - start));
        const auto room = static_cast<std::size_t>(terminal.columns) - kLabelColumns;
        for (const std::string& piece : Wrapped(line, room)) {
            page.Row(label, piece);
            label = "";
        }
        if (line.empty()) page.Row(label, "");
        label = "";
        start = end + 1;
    }
    Print(page.Text());
}

int RunSmsList(Session& session) {
    return ListPlaces(session, {SpoolPlace::kReceived, SpoolPlace::kWaiting, SpoolPlace::kFailed},
                      false);
}

int RunSmsFailed(Session& session) {
    return ListPlaces(session, {SpoolPlace::kFailed}, true);
}

int RunSmsShow(Session& session) {
    int code = kGood;
    bool first = true;
    for (const std::string& typed : session.arguments) {
        SpoolEntry entry;
        std::string complaint;
        if (!FindEntry(session.tree, typed, entry, complaint)) {
            std::fprintf(stderr, "modemctl: %s\n", complaint.c_str());
            code = kNoData;
            continue;
        }
        if (!first && !session.json) Print("\n");
        first = false;
        const SpoolMessage message = ReadMessage(session.tree, entry);
        PrintMessage(session, entry, message);
        if (message.readable != Readable::kGood && code == kGood) code = kNotGood;
    }
    return code;
}

}  // namespace modemctl

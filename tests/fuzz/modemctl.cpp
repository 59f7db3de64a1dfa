// What modemctl reads: the router's files, system logs, messages, and its own command line. The
// bytes: which of these; then the texts, parted by the byte 0x1e.
#include <cstdio>
#include <string>
#include <vector>

#include "fuzz_main.h"
#include "modemctl/chain.h"
#include "modemctl/command_line.h"
#include "modemctl/diagnosis.h"
#include "modemctl/json.h"
#include "modemctl/log_lines.h"
#include "modemctl/log_source.h"
#include "modemctl/metrics.h"
#include "modemctl/sms_spool.h"
#include "modemctl/sms_text.h"
#include "modemctl/snapshot.h"
#include "modemctl/status_document.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"

namespace {

using namespace modemctl;  // of which a target is a guest

constexpr std::time_t kNow = 1773479712;
constexpr long long kMaxAge = 30;

bool IsControl(char c) {
    return (c >= 0 && c < ' ') || c == 127;
}

void MustBeFitToShow(const std::string& shown, const char* what) {
    for (const char c : shown) Must(!IsControl(c) || c == '\n', what);
}

std::vector<LogRecord> ReadLog(const std::string& text) {
    std::vector<LogRecord> records;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        LogRecord record;
        if (ParseLogLine(text.substr(at, end - at), kNow, record)) records.push_back(record);
        at = end + 1;
    }
    return records;
}

// A router's files, and all that is said of them.
void ReadRouter(const FuzzedInput& input) {
    constexpr const char* kFiles[] = {
        "/var/log/wireless.cardstats",
        "/var/log/wirelessactivation_status",
        "/var/log/lightbar",
        "/etc/kvt/wireless/cellmodem_ppp.conf",
        "/etc/kvt/wireless/cellmodem_provision_data.conf",
        "/var/run/modemd.pid",
    };
    std::size_t part = 0;
    for (const char* const path : kFiles) FreshDaemon::Write(path, input.Part(part++));
    const Snapshot snapshot = TakeSnapshot(Tree("/."), kNow);
    const Chain chain = JudgeChain(snapshot, kMaxAge);
    const Diagnosis diagnosis = Diagnose(snapshot, ReadLog(input.Part(part)), kMaxAge);
    MustBeFitToShow(Escaped(diagnosis.next, true), "a text for the terminal");
    JsonWriter json("modemctl.status/1");
    WriteStatus(json, snapshot, chain, kMaxAge);
    MustBeFitToShow(json.Finish(), "a document is one line without control characters");
    MustBeFitToShow(MetricsText(snapshot, kMaxAge, MetricsFormat::kOpenMetrics), "metrics");
}

void ReadLogs(const FuzzedInput& input) {
    for (const LogRecord& record : ReadLog(input.Part(0))) {
        const LogMatch match = MatchLogLine(record.text);
        if (match.line != nullptr) match.Plain();
    }
    std::string journal = input.Part(1);
    if (journal.empty()) return;
    std::FILE* const stream = fmemopen(journal.data(), journal.size(), "r");
    LogRecord record;
    while (ReadExportEntry(stream, record)) MatchLogLine(record.text);
    std::fclose(stream);
}

void ReadMessages(const FuzzedInput& input) {
    const std::string text = input.Part(0);
    const SpoolMessage received = ParseReceived(text);
    MustBeFitToShow(JsonString(received.text), "a text for a document");
    ParseSendFile(text);
    NameBeforeFailure(text);
    IsFailureOf(text, input.Part(1));
    WithSubstitutes(text, FindBadCharacters(text));
    DoubtfulCharacters(text);
    for (const SmsPiece& piece : SplitText(text)) {
        Must(piece.on_air.size() <= kLongestOnAir, "a piece fits one message");
    }
    std::string number;
    if (CleanNumber(text, number)) {
        const SpoolMessage sent = ParseSendFile(SendFileText(number, "text"));
        Must(sent.number == number && sent.text == "text", "a send file is read as it was written");
    }
    MustBeFitToShow(Escaped(text, true), "a text for the terminal");
    Wrapped(text, 20);
    Padded(Cut(text, 20), 20);
}

int Nothing(Session&) {
    return 0;
}

void ReadOptions(const FuzzedInput& input) {
    const Subcommand command = {
        "look", "", "looks", "", {{"--since", "TIME", "from"}, {"--all", nullptr, "all"}},
        {},     2,  Nothing,
    };
    std::vector<std::string> words = {"look"};
    for (std::size_t i = 0; i < input.Parts(); ++i) {
        // Arguments of a program hold no zero byte.
        words.emplace_back(input.Part(i).c_str());
    }
    const int code = RunCommandLine(words, {&command});
    Must(code >= 0 && code < 128, "an exit code");
    std::time_t when = 0;
    long long seconds = 0;
    ParseTime(words.back(), kNow, when);
    ParseSpan(words.back(), seconds);
    ShownTime(when);
    ShownSpan(seconds);
}

// Complaints about every input would fill the disk.
void BeQuiet() {
    static bool quiet = false;
    if (quiet) return;
    quiet = true;
    stderr = std::fopen("/dev/null", "we");
    stdout = std::fopen("/dev/null", "we");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    constexpr void (*kReaders[])(const FuzzedInput&) = {ReadRouter, ReadLogs, ReadMessages,
                                                        ReadOptions};
    BeQuiet();
    const FuzzedInput input(data, size, 1);
    kReaders[input.Choice(0) % 4](input);
}

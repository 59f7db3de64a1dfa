// modemctl sms send: what the person typed, checked, cut into pieces, dropped and watched.
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/page.h"
#include "modemctl/sms.h"
#include "modemctl/sms_drop.h"
#include "modemctl/sms_text.h"
#include "modemctl/sms_wait.h"
#include "modemctl/snapshot.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kMostInput = 65536;
constexpr useconds_t kLookPause = 250000;  // microseconds
constexpr char kUsualTimeout[] = "88200";  // a file's life in the spool, and two looks for old
constexpr std::size_t kMostShown = 5;      // bad characters in a complaint

struct Shipment {
    std::string number;
    std::vector<SmsPiece> pieces;
    std::vector<std::string> notes;
};

// What became of one piece. Without a name it was not dropped.
struct Outcome {
    std::string name;
    Fate fate = Fate::kWaiting;
    std::string sign, reason;
};

// All of standard input; its last line end belongs to the line, not to the message.
bool ReadInput(std::string& text) {
    char piece[4096];
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, piece, sizeof(piece));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(piece, static_cast<std::size_t>(count));
        if (text.size() > kMostInput) return false;
    }
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return true;
}

std::string ShownCharacters(const std::vector<BadCharacter>& bad, bool substitutes) {
    std::string shown;
    for (std::size_t i = 0; i < bad.size() && i < kMostShown; ++i) {
        shown += (i > 0 ? ", " : "") + Escaped(bad[i].text, false);
        if (substitutes) shown += " by '" + bad[i].substitute + "'";
        shown += Format(" (byte %d)", static_cast<int>(bad[i].at + 1));
    }
    if (bad.size() > kMostShown) {
        shown += Format(" and %d more", static_cast<int>(bad.size() - kMostShown));
    }
    return shown;
}

void AddNotes(Shipment& shipment) {
    std::size_t not_exact = 0;
    std::string all;
    for (const SmsPiece& piece : shipment.pieces) {
        if (!piece.IsExact()) ++not_exact;
        all += piece.text;
    }
    if (not_exact > 0) {
        shipment.notes.emplace_back(
            "The daemon repeats the last character of a file, so blanks or a line end follow the "
            "text on air; no telephone shows them.");
    }
    const std::string doubtful = DoubtfulCharacters(all);
    if (!doubtful.empty()) {
        shipment.notes.push_back(
            "A modem set to the telephone alphabet (AT+CSCS) turns these into "
            "other characters: " +
            doubtful);
    }
}

// Returns a complaint, empty when all is well.
std::string Prepare(const Session& session, Shipment& shipment) {
    if (!CleanNumber(session.arguments[0], shipment.number)) {
        return "'" + Escaped(session.arguments[0], false) +
               "' is no number: digits, with one + in front at most";
    }
    std::string text = session.arguments.size() > 1 ? session.arguments[1] : "-";
    if (text == "-") {
        text.clear();
        if (!ReadInput(text)) return "the text on standard input is too long";
    }
    const std::vector<BadCharacter> bad = FindBadCharacters(text);
    if (!bad.empty() && !session.Has("--replace")) {
        return "cannot be sent: " + ShownCharacters(bad, false) + "; --replace replaces them";
    }
    if (!bad.empty()) shipment.notes.push_back("Replaced: " + ShownCharacters(bad, true));
    text = WithSubstitutes(text, bad);
    if (text.empty()) return "the text is empty";
    shipment.pieces = SplitText(text);
    if (shipment.pieces.empty()) return "the text needs more than 99 messages";
    for (const SmsPiece& piece : shipment.pieces) {
        if (LooksLikeFailure(piece.on_air)) {
            return "a text with \"+CMS ERROR: \" looks to the daemon like a failure of the modem, "
                   "and goes out three times";
        }
    }
    AddNotes(shipment);
    return "";
}

// Quoted, so that blanks at the end are seen, over as many rows as it takes.
void AddBytes(Page& page, const char* label, const std::string& bytes, const Terminal& terminal) {
    std::string shown = "\"" + Escaped(bytes, false) + "\"";
    const auto room = static_cast<std::size_t>(terminal.columns) - kLabelColumns;
    while (!shown.empty()) {
        page.Row(label, shown.substr(0, room));
        shown.erase(0, room);
        label = "";
    }
}

Tone ToneOf(Fate fate) {
    if (fate == Fate::kSent) return Tone::kGood;
    return fate == Fate::kWaiting || fate == Fate::kUnknown ? Tone::kFair : Tone::kBad;
}

void AddParagraph(Page& page, const char* label, const std::string& text, const Terminal& terminal,
                  Tone tone = Tone::kPlain) {
    const auto room = static_cast<std::size_t>(terminal.columns - kLabelColumns);
    for (const std::string& line : Wrapped(text, room)) {
        page.Row(label, line, tone);
        label = "";
    }
}

void AddOutcome(Page& page, const Outcome& outcome, const Terminal& terminal) {
    if (outcome.name.empty()) return;
    page.Row("File", outcome.name);
    page.Row("Fate", FateWord(outcome.fate), ToneOf(outcome.fate));
    if (!outcome.sign.empty()) AddParagraph(page, "Sign", terminal.Show(outcome.sign), terminal);
    if (!outcome.reason.empty()) {
        AddParagraph(page, "Reason", terminal.Show(outcome.reason), terminal);
    }
}

void PrintPage(const Session& session, const Shipment& shipment,
               const std::vector<Outcome>& outcomes) {
    const Terminal& terminal = session.terminal;
    Page page(terminal);
    page.Row("To", shipment.number);
    for (std::size_t i = 0; i < shipment.pieces.size(); ++i) {
        const SmsPiece& piece = shipment.pieces[i];
        page.Row(Format("Message %d/%d", static_cast<int>(i + 1),
                        static_cast<int>(shipment.pieces.size())),
                 Format("%d bytes on air%s", static_cast<int>(piece.on_air.size()),
                        piece.IsExact() ? ", as typed" : ""));
        AddBytes(page, "On air", piece.on_air, terminal);
        if (i < outcomes.size()) AddOutcome(page, outcomes[i], terminal);
    }
    for (const std::string& note : shipment.notes) AddParagraph(page, "Note", note, terminal);
    Print(page.Text());
}

void PrintDocument(const Shipment& shipment, const std::vector<Outcome>& outcomes) {
    JsonWriter json("modemctl.sms_send/1");
    json.Text("to", shipment.number);
    json.Texts("notes", shipment.notes);
    json.BeginArray("messages");
    for (std::size_t i = 0; i < shipment.pieces.size(); ++i) {
        const SmsPiece& piece = shipment.pieces[i];
        const Outcome outcome = i < outcomes.size() ? outcomes[i] : Outcome();
        json.BeginElement();
        json.Text("text", piece.text);
        json.Text("on_air", piece.on_air);
        json.Bool("exact", piece.IsExact());
        if (outcome.name.empty()) {
            json.Null("name");
            json.Text("fate", "not_dropped");
        } else {
            json.Text("name", outcome.name);
            json.Text("fate", JsonWord(FateWord(outcome.fate)));
        }
        json.Text("sign", outcome.sign);
        json.Text("reason", outcome.reason);
        json.End();
    }
    Print(json.Finish() + "\n");
}

// Drops the pieces one after the other, each when the one before is gone, and the last one, too,
// is watched on request.
class Sender {
  public:
    Sender(const Session& session, const Shipment& shipment, long long timeout)
        : session_(session), shipment_(shipment), timeout_(timeout), log_(session.tree, "") {}

    // A complaint when a file could not be dropped.
    std::string Run() {
        for (std::size_t i = 0; i < shipment_.pieces.size(); ++i) {
            const bool is_last = i + 1 == shipment_.pieces.size();
            const std::string complaint = SendPiece(shipment_.pieces[i], !is_last);
            if (!complaint.empty()) return complaint;
            const Fate fate = outcomes_.back().fate;
            const bool gone_well = fate == Fate::kSent || (fate == Fate::kUnknown && !timed_out_);
            if (!is_last && !gone_well) return "";
        }
        return "";
    }

    const std::vector<Outcome>& outcomes() const { return outcomes_; }

    int ExitCodeOf() const {
        if (outcomes_.size() < shipment_.pieces.size()) return timed_out_ ? kNoData : kNotGood;
        bool unknown = false;
        for (const Outcome& outcome : outcomes_) {
            const bool bad = outcome.fate == Fate::kRefused || outcome.fate == Fate::kFailed ||
                             outcome.fate == Fate::kAgedOut;
            if (bad) return kNotGood;
            unknown = unknown || outcome.fate == Fate::kUnknown;
        }
        return session_.Has("--wait") && unknown ? kNoData : kGood;
    }

  private:
    std::string SendPiece(const SmsPiece& piece, bool must_go) {
        Outcome outcome;
        outcome.name = NewSendName();
        SendWatch watch(outcome.name, log_);
        const std::string complaint =
            DropSendFile(outcome.name, SendFileText(shipment_.number, piece.file_text));
        if (!complaint.empty()) return complaint;
        if (must_go || session_.Has("--wait")) Await(watch, outcome);
        outcomes_.push_back(outcome);
        return "";
    }

    void Await(SendWatch& watch, Outcome& outcome) {
        timespec start = {};
        clock_gettime(CLOCK_MONOTONIC, &start);
        for (;;) {
            outcome.fate = watch.Look();
            outcome.sign = watch.sign();
            outcome.reason = watch.story().reason();
            if (outcome.fate != Fate::kWaiting) return;
            timespec now = {};
            clock_gettime(CLOCK_MONOTONIC, &now);
            if (now.tv_sec - start.tv_sec >= timeout_) break;
            usleep(kLookPause);
        }
        outcome.fate = Fate::kUnknown;
        outcome.sign = "the file still waits in the spool";
        timed_out_ = true;
    }

    const Session& session_;
    const Shipment& shipment_;
    const long long timeout_;
    LogTail log_;
    bool timed_out_ = false;
    std::vector<Outcome> outcomes_;
};

}  // namespace

int RunSmsSend(Session& session) {
    Shipment shipment;
    long long timeout = 0;
    if (!ParseSpan(session.Value("--timeout", kUsualTimeout), timeout)) {
        return UsageError("sms", "--timeout is a number of seconds, or such as 15m or 2h");
    }
    std::string complaint = Prepare(session, shipment);
    if (!complaint.empty()) return UsageError("sms", complaint);
    if (session.Has("--dry-run")) {
        session.json ? PrintDocument(shipment, {}) : PrintPage(session, shipment, {});
        return kGood;
    }
    if (TakeSnapshot(session.tree, session.now).daemon != DaemonState::kRunning) {
        shipment.notes.emplace_back("No daemon is running: nothing is sent until it is started.");
    }
    Sender sender(session, shipment, timeout);
    complaint = sender.Run();
    if (session.json) {
        PrintDocument(shipment, sender.outcomes());
    } else {
        PrintPage(session, shipment, sender.outcomes());
    }
    if (complaint.empty()) return sender.ExitCodeOf();
    std::fprintf(stderr, "modemctl: %s\n", Escaped(complaint, false).c_str());
    return kNotGood;
}

}  // namespace modemctl

#include "modemctl/why.h"

#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/log_source.h"
#include "modemctl/page.h"
#include "modemctl/status_document.h"
#include "modemctl/time_text.h"
#include "modemctl/tones.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kMostRecords = 5000;
constexpr long long kLookBack = 86400;  // seconds
constexpr std::size_t kMostProofs = 3;
constexpr char kSecondCopyNote[] =
    "The daemon was started again while it ran: keep only one start script.";

// On this page what nobody has said may be the answer, and stands out.
Tone ToneOfLink(Hold hold) {
    return hold == Hold::kUnknown ? Tone::kFair : ToneOf(hold);
}

std::string Verdict(const Diagnosis& diagnosis, const Snapshot& snapshot) {
    if (diagnosis.chain.verdict == kGood) {
        return snapshot.card == Card::kLte ? "The link is up." : "Nothing is known to be wrong.";
    }
    return diagnosis.chain.First(Hold::kBroken) < kChainParts ? "There is no link."
                                                              : "Not known to be up.";
}

void AddChain(Page& page, const Chain& chain, const Terminal& terminal) {
    constexpr std::size_t kNameColumns = 16;
    constexpr std::size_t kHoldColumns = 13;
    bool below = false;  // behind the first broken link the others follow from it
    for (std::size_t i = 0; i < kChainParts; ++i) {
        const ChainLink& link = chain.links[i];
        const std::string word = Padded(HoldWord(link.hold), kHoldColumns);
        const Tone tone = below && link.hold != Hold::kHolds ? Tone::kDim : ToneOfLink(link.hold);
        const std::string what =
            Cut(terminal.Show(link.what),
                static_cast<std::size_t>(terminal.columns) - kLabelColumns - kHoldColumns);
        const std::string name = std::string("  ") + PartName(static_cast<ChainPart>(i));
        page.PaintedRow(Padded(name, kNameColumns), terminal.Paint(tone, word) + what, 0);
        below = below || link.hold == Hold::kBroken;
    }
}

void AddParagraph(Page& page, const char* label, const std::string& text, int columns) {
    for (const std::string& line :
         Wrapped(text, static_cast<std::size_t>(columns - kLabelColumns))) {
        page.Row(label, line);
        label = "";
    }
}

std::string ShownProof(const Proof& proof, const Terminal& terminal) {
    std::string text = proof.last != 0 ? ShownTime(proof.last).substr(11) + "  " : "";
    text += terminal.Show(proof.text);
    if (proof.times > 1) {
        text +=
            Format(" (%d times since %s)", proof.times, ShownTime(proof.first).substr(11).c_str());
    }
    return text;
}

void AddCause(Page& page, const Diagnosis& diagnosis, const Terminal& terminal) {
    const int columns = terminal.columns;
    page.Line("");
    AddParagraph(page, "Why", diagnosis.cause->why, columns);
    const auto& proofs = diagnosis.proofs;
    const std::size_t first = proofs.size() > kMostProofs ? proofs.size() - kMostProofs : 0;
    for (std::size_t i = first; i < proofs.size(); ++i) {
        AddParagraph(page, i == first ? "Log" : "", ShownProof(proofs[i], terminal), columns);
    }
    AddParagraph(page, "Next", diagnosis.next, columns);
    AddParagraph(page, "Do", diagnosis.cause->help, columns);
}

void PrintDocument(const Diagnosis& diagnosis, long long max_age) {
    const Snapshot& snapshot = diagnosis.snapshot;
    JsonWriter json("modemctl.why/1");
    json.Text("time", IsoTime(snapshot.now));
    json.Text("verdict", VerdictWord(diagnosis.chain.verdict));
    WriteStatistics(json, snapshot, max_age);
    WriteChain(json, diagnosis.chain);
    if (diagnosis.cause == nullptr) {
        json.Null("cause");
    } else {
        json.BeginObject("cause");
        json.Text("id", diagnosis.cause->id);
        json.Text("part", PartName(diagnosis.cause->part));
        json.Text("why", diagnosis.cause->why);
        json.BeginArray("log");
        for (const Proof& proof : diagnosis.proofs) {
            json.BeginElement();
            json.Text("line", proof.text);
            json.Number("times", proof.times);
            if (proof.last != 0) {
                json.Text("first", IsoTime(proof.first));
                json.Text("last", IsoTime(proof.last));
            }
            json.End();
        }
        json.End();
        json.Text("next", diagnosis.next);
        json.Text("help", diagnosis.cause->help);
        json.End();
    }
    json.Number("second_copies", diagnosis.second_copies);
    Print(json.Finish() + "\n");
}

int RunWhy(Session& session) {
    LogRequest request;
    request.file = session.Value("--log");
    request.now = session.now;
    request.since = session.now - kLookBack;
    const Snapshot snapshot = TakeSnapshot(session.tree, session.now);
    std::string complaint;
    const auto records = RecentRecords(session.tree, request, kMostRecords, complaint);
    const Diagnosis diagnosis = Diagnose(snapshot, records, session.max_age);
    if (session.json) {
        PrintDocument(diagnosis, session.max_age);
    } else {
        std::string page = WhyPage(diagnosis, session);
        if (!complaint.empty()) page += "\n(without the log: " + complaint + ")\n";
        Print(page);
    }
    return diagnosis.chain.verdict;
}

}  // namespace

std::string WhyPage(const Diagnosis& diagnosis, const Session& session) {
    const Terminal& terminal = session.terminal;
    const Snapshot& snapshot = diagnosis.snapshot;
    Page page(terminal);
    page.Line(Verdict(diagnosis, snapshot),
              diagnosis.chain.verdict == kGood ? Tone::kGood : Tone::kBad);
    page.Line("");
    AddChain(page, diagnosis.chain, terminal);
    if (diagnosis.cause != nullptr) AddCause(page, diagnosis, terminal);
    if (diagnosis.second_copies > 0) {
        page.Line("");
        AddParagraph(page, "Note", kSecondCopyNote, terminal.columns);
    }
    return page.Text();
}

const Subcommand kWhyCommand = {
    "why",
    "",
    "why there is no link, and what to do",
    "Walks the chain that a link hangs on: port, SIM, registration, service, call, address and\n"
    "traffic. Shows the first broken link of it, the log lines that say so, what the daemon will\n"
    "do next and when, and what a person can do.",
    {{"--log", "FILE",
      "the system log to look into, instead of the router's; - for standard input"}},
    {{"modemctl why", "on the router"},
     {"modemctl why --root /tmp/copy --log /tmp/copy/var/log/messages",
      "of files copied elsewhere"}},
    0,
    RunWhy,
};

}  // namespace modemctl

#include "modemctl/doctor.h"

#include <algorithm>

#include "modemctl/bundle.h"
#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/time_text.h"
#include "modemctl/tones.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kHealthColumns = 5;
constexpr std::size_t kIdColumns = 19;

const char* ShortWord(Health health) {
    return health == Health::kNotChecked ? "-" : HealthWord(health);
}

void AddRow(std::string& page, const CheckedFinding& row, const Terminal& terminal) {
    const Finding& finding = row.finding;
    const std::string indent(kHealthColumns + kIdColumns, ' ');
    const std::size_t room = static_cast<std::size_t>(terminal.columns) - indent.size();
    page +=
        terminal.Paint(ToneOf(finding.health), Padded(ShortWord(finding.health), kHealthColumns)) +
        Padded(row.id, kIdColumns);
    std::string what = terminal.Show(finding.what);
    if (finding.health == Health::kNotChecked) what = "not checked here: " + what;
    bool first = true;
    for (const std::string& line : Wrapped(what, room)) {
        page += (first ? "" : indent) + line + "\n";
        first = false;
    }
    if (first) page += "\n";
    if (finding.mend.empty()) return;
    first = true;
    for (const std::string& line : Wrapped(terminal.Show(finding.mend), room - 3)) {
        page += indent + (first ? "-> " : "   ") + terminal.Paint(Tone::kBold, line) + "\n";
        first = false;
    }
}

std::string DoctorPage(const std::vector<CheckedFinding>& findings, const Terminal& terminal) {
    std::string page;
    int bad = 0;
    int notes = 0;
    for (const CheckedFinding& row : findings) {
        AddRow(page, row, terminal);
        if (row.finding.health == Health::kBad) ++bad;
        if (row.finding.health == Health::kNote) ++notes;
    }
    return page + Format("%d bad, %d to note\n", bad, notes);
}

int RunDoctor(Session& session) {
    const Patient patient = MeetPatient(session.tree, session.now);
    const std::vector<CheckedFinding> findings = Examine(patient);
    if (session.Has("--bundle")) return WriteBundle(session, patient, findings);
    Print(session.json ? DoctorDocument(findings, session.now) + "\n"
                       : DoctorPage(findings, session.terminal));
    return DoctorExitCode(findings);
}

}  // namespace

std::vector<CheckedFinding> Examine(const Patient& patient) {
    std::vector<CheckedFinding> findings;
    for (const Check& check : AllChecks()) findings.push_back({check.id, check.look(patient)});
    return findings;
}

int DoctorExitCode(const std::vector<CheckedFinding>& findings) {
    const auto count = [&](Health health) {
        return std::count_if(findings.begin(), findings.end(), [&](const CheckedFinding& row) {
            return row.finding.health == health;
        });
    };
    if (count(Health::kBad) > 0) return kNotGood;
    return count(Health::kFine) + count(Health::kNote) > 0 ? kGood : kNoData;
}

std::string DoctorDocument(const std::vector<CheckedFinding>& findings, std::time_t now) {
    JsonWriter json("modemctl.doctor/1");
    json.Text("time", IsoTime(now));
    json.BeginArray("checks");
    for (const CheckedFinding& row : findings) {
        json.BeginElement();
        json.Text("id", row.id);
        json.Text("health", JsonWord(HealthWord(row.finding.health)));
        json.Text("what", row.finding.what);
        json.Text("mend", row.finding.mend);
        json.End();
    }
    return json.Finish();
}

const Subcommand kDoctorCommand = {
    "doctor",
    "[--bundle FILE]",
    "what is wrong with this installation, and how to mend it",
    "Looks at everything that breaks an installation, one line each, with the exact mend. It only\n"
    "looks. In a copied tree, what needs the live system is not checked.\n"
    "--bundle packs what a maker needs for a report of a fault, as a tar file. Personal data "
    "(serial\n"
    "numbers, telephone numbers, cells, APNs, addresses, texts) are replaced by others of the "
    "same\n"
    "shape, the same for the same one; what cannot be placed is left out.",
    {{"--bundle", "FILE", "write a report for the maker instead"}},
    {{"modemctl doctor", "before a router leaves the house"},
     {"modemctl doctor --bundle /tmp/report.tar", "for a report of a fault"}},
    0,
    RunDoctor,
};

}  // namespace modemctl

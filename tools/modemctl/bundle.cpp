#include "modemctl/bundle.h"

#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "modemctl/bundle_lines.h"
#include "modemctl/exit_code.h"
#include "modemctl/json.h"
#include "modemctl/page.h"
#include "modemctl/sms_spool.h"
#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kLeftOut[] = "# left out: not known to be free of personal data";
constexpr std::size_t kMostLogLines = 5000;
constexpr std::size_t kMostMessages = 200;  // of each place
constexpr std::size_t kTarBlock = 512;
constexpr std::size_t kLongestTarName = 100;

// One value each.
struct ValueFile {
    const char* path;
    bool personal;
    Personal kind;
};

constexpr ValueFile kValueFiles[] = {
    {published::kSerialNumberFile, true, Personal::kSerial},
    {published::kDirectoryNumberFile, true, Personal::kNumber},
    {published::kActivationStatusFile, false, Personal::kText},
    {published::kLightbarFile, false, Personal::kText},
    {published::kLightbarEcioFile, false, Personal::kText},
    {published::kLightbarChannelFile, false, Personal::kText},
    {published::kDialingMarker, false, Personal::kText},
    {published::kNotDialingMarker, false, Personal::kText},
    {published::kResettingMarker, false, Personal::kText},
};

// Numbers of the kernel: nothing of a person in them.
constexpr const char* kPlainFiles[] = {
    published::kUptimeFile,
    published::kTxBytesFile,
    "/sys/class/net/wwan0/statistics/rx_bytes",
    "/var/run/modemd.pid",
};

class BundleMaker {
  public:
    BundleMaker(const Patient& patient, Anonymizer& anonymizer)
        : patient_(patient), anonymizer_(anonymizer) {}

    // What names the personal data comes first, so that it is known in all that follows.
    Bundle Make(const std::vector<CheckedFinding>& findings) {
        for (const char* const path : {published::kCardStatisticsFile, published::kPppConfigFile,
                                       published::kProvisioningFile, published::kInitStatusFile}) {
            AddKeyFile(path);
        }
        for (const ValueFile& file : kValueFiles) AddValueFile(file);
        for (const SpoolPlace place : kSpoolPlaces) AddSpool(place);
        for (const char* const path : kPlainFiles) AddPlainFile(path);
        AddProcess();
        AddLog();
        AddFindings(findings);
        AddFacts();
        return bundle_;
    }

  private:
    void Add(const std::string& path, const std::string& text, std::time_t modified) {
        bundle_.files.push_back({path, text, modified});
    }

    void AddKeyFile(const char* path) {
        const TextFile file = patient_.tree.Read(path, AnyText);
        if (file.presence == Presence::kAbsent || file.presence == Presence::kUnreadable) return;
        std::string text;
        for (std::size_t start = 0; start < file.text.size();) {
            const std::size_t end = std::min(file.text.find('\n', start), file.text.size());
            std::string placed;
            if (PlaceKeyLine(file.text.substr(start, end - start), anonymizer_, placed)) {
                text += placed;
            } else {
                text += kLeftOut;
                ++bundle_.left_out;
            }
            if (end < file.text.size()) text += '\n';
            start = end + 1;
        }
        Add(path, text, file.modified);
    }

    void AddValueFile(const ValueFile& row) {
        const TextFile file = patient_.tree.Read(row.path, AnyText);
        if (file.presence == Presence::kAbsent || file.presence == Presence::kUnreadable) return;
        const bool has_end = !file.text.empty() && file.text.back() == '\n';
        std::string value = has_end ? file.text.substr(0, file.text.size() - 1) : file.text;
        value = row.personal ? anonymizer_.Replace(row.kind, value) : anonymizer_.Scrub(value);
        Add(row.path, value + (has_end ? "\n" : ""), file.modified);
    }

    void AddPlainFile(const char* path) {
        const TextFile file = patient_.tree.Read(path, AnyText);
        const bool number = file.text.find_first_not_of("0123456789. \n") == std::string::npos;
        if (!file.IsWhole()) return;
        if (number) return Add(path, file.text, file.modified);
        ++bundle_.left_out;
    }

    // Only the words that are known: the card's option and the device.
    void AddProcess() {
        const StartOrder& order = patient_.order;
        if (!patient_.Runs()) return;
        std::string words = std::string("modemd") + '\0';
        if (!order.card.empty()) words += "-" + order.card + '\0';
        if (!order.device.empty()) words += anonymizer_.Scrub(order.device) + '\0';
        Add(Format("/proc/%d/cmdline", patient_.snapshot.pid), words, patient_.snapshot.now);
    }

    void AddSpool(SpoolPlace place) {
        std::vector<SpoolEntry> entries;
        ListSpool(patient_.tree, place, entries);
        std::size_t count = 0;
        for (const SpoolEntry& entry : entries) {
            const std::string name = PlaceSpoolName(entry.name, anonymizer_);
            names_.emplace_back(Escaped(entry.name, false), Escaped(name, false));
            const SpoolMessage message = ReadMessage(patient_.tree, entry);
            const bool good = message.readable == Readable::kGood;
            if (entry.kind != EntryKind::kFile || !good || ++count > kMostMessages) {
                ++bundle_.left_out;
                continue;
            }
            const std::string number = anonymizer_.Replace(Personal::kNumber, message.number);
            const std::string text = anonymizer_.Replace(Personal::kText, message.text);
            const std::string file = place == SpoolPlace::kReceived
                                         ? "FROM=" + number +
                                               "\nTIME=" + anonymizer_.Scrub(message.time) +
                                               "\nMSG=" + text + "\n"
                                         : SendFileText(number, text);
            Add(PlaceDirectory(place) + Escaped(name, false), file, entry.changed);
        }
    }

    void AddLog() {
        std::string text;
        const auto& log = patient_.log;
        const std::size_t first = log.size() > kMostLogLines ? log.size() - kMostLogLines : 0;
        for (std::size_t i = first; i < log.size(); ++i) {
            std::string placed;
            if (!PlaceLogLine(log[i].text, anonymizer_, placed)) {
                ++bundle_.left_out;
                continue;
            }
            // One line each, whatever a message holds.
            std::replace(placed.begin(), placed.end(), '\n', ' ');
            const std::time_t when = log[i].when != 0 ? log[i].when : patient_.snapshot.now;
            text += IsoTime(when) + " router modemd: " + placed + "\n";
        }
        if (patient_.has_log) Add("/var/log/messages", text, patient_.snapshot.now);
    }

    std::string Scrubbed(std::string text) {
        for (const auto& name : names_) {
            if (name.first == name.second || name.first.size() < 2) continue;
            for (std::size_t at = text.find("/" + name.first); at != std::string::npos;
                 at = text.find("/" + name.first, at + 1 + name.second.size())) {
                text.replace(at + 1, name.first.size(), name.second);
            }
        }
        return anonymizer_.Scrub(text);
    }

    void AddFindings(const std::vector<CheckedFinding>& findings) {
        std::vector<CheckedFinding> scrubbed = findings;
        for (CheckedFinding& row : scrubbed) {
            row.finding.what = Scrubbed(Escaped(row.finding.what, false));
            row.finding.mend = Scrubbed(Escaped(row.finding.mend, false));
        }
        Add("/doctor.json", DoctorDocument(scrubbed, patient_.snapshot.now) + "\n",
            patient_.snapshot.now);
    }

    // What the kernel says of the moment; the tools that read the unpacked tree look here.
    void AddFacts() {
        const Snapshot& snapshot = patient_.snapshot;
        std::string facts = "now=" + IsoTime(snapshot.now) + "\n";
        if (snapshot.address_known) {
            facts += "address=" +
                     (snapshot.address.empty()
                          ? "none"
                          : anonymizer_.Replace(Personal::kAddress, snapshot.address)) +
                     "\n";
        }
        utsname system = {};
        if (patient_.IsLive() && uname(&system) == 0) {
            facts += std::string("kernel=") + system.release + " " + system.machine + "\n";
        }
        facts += Format("left_out=%d\n", static_cast<int>(bundle_.left_out));
        Add("/modemctl.facts", facts, snapshot.now);
    }

    const Patient& patient_;
    Anonymizer& anonymizer_;
    Bundle bundle_;
    std::vector<std::pair<std::string, std::string>> names_;  // of spool files, before and after
};

void PutField(std::string& header, std::size_t at, const std::string& text) {
    header.replace(at, text.size(), text);
}

std::string TarHeader(const BundleFile& file) {
    std::string header(kTarBlock, '\0');
    PutField(header, 0, file.path.substr(1, kLongestTarName - 1));
    PutField(header, 100, "0000644");
    PutField(header, 108, "0000000");
    PutField(header, 116, "0000000");
    PutField(header, 124, Format("%011lo", static_cast<unsigned long>(file.text.size())));
    PutField(header, 136, Format("%011lo", static_cast<unsigned long>(file.modified)));
    PutField(header, 148, std::string(8, ' '));  // counts as blanks in its own sum
    PutField(header, 156, "0");
    PutField(header, 257,
             std::string("ustar\0"
                         "00",
                         8));
    unsigned sum = 0;
    for (const char c : header) sum += static_cast<unsigned char>(c);
    PutField(header, 148, Format("%06o", sum) + std::string("\0 ", 2));
    return header;
}

std::string SaveFile(const std::string& path, const std::string& text) {
    const std::string beside = path + ".new";
    const int fd = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return "cannot write " + beside + ": " + std::strerror(errno);
    std::size_t done = 0;
    ssize_t count = 1;
    while (done < text.size() && count > 0) {
        count = write(fd, text.data() + done, text.size() - done);
        if (count > 0) done += static_cast<std::size_t>(count);
    }
    const bool good = done == text.size() && fsync(fd) == 0;
    close(fd);
    if (good && rename(beside.c_str(), path.c_str()) == 0) return "";
    const std::string complaint = "cannot write " + path + ": " + std::strerror(errno);
    unlink(beside.c_str());
    return complaint;
}

void TellBundle(const Session& session, const std::string& path, const Bundle& bundle,
                std::size_t replaced) {
    if (session.json) {
        JsonWriter json("modemctl.bundle/1");
        json.Text("file", path);
        json.Number("files", static_cast<long long>(bundle.files.size()));
        json.Number("replaced", static_cast<long long>(replaced));
        json.Number("left_out", static_cast<long long>(bundle.left_out));
        return Print(json.Finish() + "\n");
    }
    Page page(session.terminal);
    page.Row("Report", session.terminal.Show(path));
    page.Row("Files", Format("%d", static_cast<int>(bundle.files.size())));
    page.Row("Replaced", Format("%d personal data and words", static_cast<int>(replaced)));
    page.Row("Left out",
             Format("%d lines that could not be placed", static_cast<int>(bundle.left_out)));
    Print(page.Text());
}

}  // namespace

std::string TarOf(const std::vector<BundleFile>& files) {
    std::string tar;
    for (const BundleFile& file : files) {
        tar += TarHeader(file) + file.text;
        tar += std::string((kTarBlock - tar.size() % kTarBlock) % kTarBlock, '\0');
    }
    return tar + std::string(2 * kTarBlock, '\0');
}

Bundle MakeBundle(const Patient& patient, const std::vector<CheckedFinding>& findings,
                  Anonymizer& anonymizer) {
    return BundleMaker(patient, anonymizer).Make(findings);
}

int WriteBundle(const Session& session, const Patient& patient,
                const std::vector<CheckedFinding>& findings) {
    const std::string path = session.Value("--bundle");
    Anonymizer anonymizer(Anonymizer::NewKey());
    const Bundle bundle = MakeBundle(patient, findings, anonymizer);
    for (const BundleFile& file : bundle.files) {
        if (!anonymizer.Leaks(file.path + "\n" + file.text)) continue;
        std::fprintf(stderr, "modemctl: personal data would be left in %s: nothing is written\n",
                     file.path.c_str());
        return kNotGood;
    }
    const std::string tar = TarOf(bundle.files);
    if (path == "-") {
        Print(tar);
        return kGood;
    }
    const std::string complaint = SaveFile(path, tar);
    if (!complaint.empty()) {
        std::fprintf(stderr, "modemctl: %s\n", Escaped(complaint, false).c_str());
        return kNotGood;
    }
    TellBundle(session, path, bundle, anonymizer.Count());
    return kGood;
}

}  // namespace modemctl

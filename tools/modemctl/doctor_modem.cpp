// Checks of what the modem says, and of the hazards that come with modems and files.
#include <algorithm>

#include "modemctl/doctor_checks.h"
#include "modemctl/time_text.h"
#include "state/cards.h"
#include "state/published.h"
#include "support/info_table.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

constexpr long long kOldStatistics = 60;          // seconds
constexpr long long kMostSentBytes = 2147483647;  // the daemon counts in 31 bits
constexpr long long kManySentBytes = 1900000000;

// What else a modem may call itself than by the name of its option.
struct Alias {
    const char* word;
    CardType card;
};

constexpr Alias kAliases[] = {
    {"MC7700", kCardSierra881},  {"MC8790", kCardSierra881},     {"USB551L", kCardNovatelE362},
    {"MC679", kCardNovatelE371}, {"USB 305", kCardSierraUsb305}, {"MC75i", kCardMc75i},
};

// Null for a model that no option is for.
const cards::Model* CardOf(const std::string& model) {
    if (const cards::Model* card = cards::ModelOfOption(model)) return card;
    for (const Alias& alias : kAliases) {
        if (Contains(model, alias.word)) return cards::ModelOfType(alias.card);
    }
    return nullptr;
}

std::string TextOf(const Patient& patient, const char* name) {
    const Value value = patient.snapshot.statistics.Get(name);
    return value.IsTold() ? value.text : "";
}

bool HasStatistics(const Patient& patient) {
    return patient.snapshot.statistics.presence == Presence::kWhole;
}

// A value that is an answer to something else: the echo of a command, a result, a foreign label.
bool LooksLikeAnswer(const std::string& text) {
    if (text == "OK" || text == "ERROR") return true;
    for (const char* const start :
         {"AT+", "AT$", "AT!", "AT*", "AT^", "at+", "at!", "+C", "$N", "!G", "^H", "*C"}) {
        if (text.compare(0, std::string(start).size(), start) == 0) return true;
    }
    return Contains(text, "+CREG:") || Contains(text, "+CME ERROR");
}

}  // namespace

Finding CheckCard(const Patient& patient) {
    const std::string model = TextOf(patient, key::kModel);
    const std::string& card = patient.order.card;
    if (model.empty()) return NotChecked("the modem has not told its model");
    if (patient.order.source.empty()) return NotChecked("nothing tells the option word");
    const cards::Model* const right = CardOf(model);
    if (right == nullptr) {
        return Note("'" + model + "' is no model that an option word is for",
                    "see that the option fits: " + (card.empty() ? "none" : "-" + card));
    }
    if (card == right->name) return Fine("-" + card + " is right for '" + model + "'");
    return Bad("the modem is a '" + model + "', the daemon was told " +
                   (card.empty() ? "nothing" : "-" + card),
               std::string("start it with -") + right->name + ": CARD=" + right->name +
                   " in /etc/default/modemd");
}

// What is taken from the spool while the port is dead counts as sent.
Finding CheckSilentPort(const Patient& patient) {
    const Snapshot& snapshot = patient.snapshot;
    if (!HasStatistics(patient)) return NotChecked("no statistics");
    if (snapshot.Age() <= kOldStatistics) return Fine("the modem answers");
    const std::string age = "the modem is silent since " + ShownSpan(snapshot.Age());
    if (snapshot.sending.files == 0 || snapshot.card != Card::kSierra881) {
        return Note(age, "see why: modemctl why");
    }
    return Bad(age + ": each waiting message is taken, and counts as sent",
               "mv /tmp/sms/send/* /tmp/sms/ until modemctl status shows a signal, then mv back");
}

Finding CheckSentBytes(const Patient& patient) {
    if (!patient.snapshot.sent_bytes) return NotChecked("no counter of wwan0");
    const long long sent = *patient.snapshot.sent_bytes;
    if (sent > kMostSentBytes) {
        return Bad("more than 2 GiB sent: the daemon takes the link for dead, and resets the modem",
                   "load wwan0's driver again, or plug the modem in again, and restart the daemon");
    }
    if (sent > kManySentBytes) {
        return Note(
            Format("%lld MB sent; beyond 2 GiB the daemon takes the link for dead", sent / 1000000),
            "in a quiet hour load the driver of wwan0 again, and restart the daemon");
    }
    return Fine(Format("%lld MB sent", sent / 1000000));
}

// A modem without the network's time begins at 80/01/06.
Finding CheckNetworkTime(const Patient& patient) {
    if (!patient.has_log) return NotChecked("no log");
    const LogRecord* const set = patient.NewestLine("Syncing system time to ");
    const LogRecord* const refused = patient.NewestLine("Time from tower does not look valid: ");
    if (set != nullptr && (Contains(set->text, "1980") || Contains(set->text, "2080"))) {
        return Bad("the clock was set by a modem that had no time: " + set->text,
                   "SYNC_TIME=no in cellmodem_provision_data.conf, and set the clock: date -s");
    }
    if (refused != nullptr && (set == nullptr || refused->when > set->when)) {
        return Note("the network tells no time: " + refused->text,
                    "if it stays: SYNC_TIME=no in cellmodem_provision_data.conf");
    }
    return Fine(set != nullptr ? set->text : "the log tells of no trouble");
}

Finding CheckEmptyLevel(const Patient& patient) {
    if (!HasStatistics(patient)) return NotChecked("no statistics");
    const bool full =
        TextOf(patient, key::kCurrentRssi) == "0" && TextOf(patient, key::kCurrentCsq) == "31";
    if (!full) return Fine("no level that the modem left empty");
    return Note("0 dBm and CSQ 31 stand for an RX level that the modem left empty",
                "look at RSRP, or at the antenna; modemctl status passes over it");
}

Finding CheckUnknownSignal(const Patient& patient) {
    if (!HasStatistics(patient)) return NotChecked("no statistics");
    if (TextOf(patient, key::kCurrentRssi) != "-99" || TextOf(patient, key::kCurrentCsq) != "99") {
        return Fine("the modem tells its signal");
    }
    return Note("-99 dBm is no reading: the modem does not know its signal (CSQ 99)",
                "antenna, SIM, coverage: modemctl why");
}

// Answers that come late, and registration news that nobody asked for, end up in the place of
// another answer.
Finding CheckAnswersInStep(const Patient& patient) {
    if (!HasStatistics(patient)) return NotChecked("no statistics");
    for (const auto& row : patient.snapshot.statistics.values) {
        if (!LooksLikeAnswer(row.second)) continue;
        return Bad(
            row.first + " is the answer to something else: " + row.second,
            "restart the daemon; if it comes back, AT+CREG=0 in the modem, or a faster port");
    }
    return Fine("each value answers its own question");
}

// Text mode is asked for once, at the start of the daemon.
Finding CheckTextMode(const Patient& patient) {
    const LogRecord* const yes = patient.NewestLine("Modem supports CMGF SMS");
    const LogRecord* const no = patient.NewestLine("Modem does not support CMGF SMS");
    if (yes == nullptr && no == nullptr) return NotChecked("the log of a day does not tell");
    if (yes != nullptr && (no == nullptr || no->when <= yes->when)) return Fine(yes->text);
    if (patient.order.card == "881") {
        return Bad("the modem refused text mode at the start: no messages in either direction",
                   "restart the daemon when the modem is ready; if it stays: AT+CMGF=1");
    }
    const bool waits = patient.snapshot.sending.files > 0;
    if (!waits) return Fine("this card has no messages, and none waits");
    return Note("this card has no messages: what waits in the spool is deleted at 24 hours",
                "send from a router with a Sierra 881");
}

// The daemon gives a listing two seconds, and deletes what the modem then calls read.
Finding CheckListing(const Patient& patient) {
    if (patient.NewestLine("Modem supports CMGF SMS") == nullptr) {
        return NotChecked("the log does not say that this modem has messages");
    }
    return NotChecked("how long the modem's list takes is not seen in files: keep its store small");
}

// Counted by the scripts of pppd; a count that stands at a multiple of 8 resets the modem at every
// other start.
Finding CheckErrorCount(const Patient& patient) {
    const std::string path = published::kInitStatusFile;
    const TextFile file = patient.tree.Read(path, AnyText);
    const std::string text =
        cInfoTable::FromText(file.text, '=').GetValue(published::config_key::kPppErrorCount);
    if (text.empty()) return NotChecked("no error count in " + path);
    const int count = ToInt(text);
    if (patient.snapshot.card == Card::kLte || count <= 0 || count % 8 != 0) {
        return Fine(Format("the count of PPP errors is %d", count));
    }
    return Note(Format("the count of PPP errors stands at %d: the modem is reset at every other "
                       "start",
                       count),
                "have the script that stops pppd set PPP_WIRELESS_ERROR_COUNTER=0");
}

}  // namespace modemctl

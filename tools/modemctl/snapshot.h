// What the daemon has published, read once into a plain record. Nothing here judges: that is for
// the rooms that show it.
#pragma once

#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "modemctl/tree.h"

namespace modemctl {

// A value may be missing in four ways, and a technician acts differently on each: the daemon does
// not publish it for this card, the modem has not told it yet, or the modem has told nothing. The
// fourth, a value that is too old, is a property of the file: see Freshness.
enum class Told { kAbsent, kUnknown, kEmpty, kValue };

struct Value {
    Told told = Told::kAbsent;
    std::string text;

    bool IsTold() const { return told == Told::kValue; }
    std::optional<long long> Integer() const;  // when it is told and is one
};
Value ValueOf(const std::string& text);

enum class Freshness { kAbsent, kFresh, kTooOld };

// /var/log/wireless.cardstats
struct Statistics {
    Presence presence = Presence::kAbsent;
    std::time_t written = 0;  // as its first line says, else as the file system says
    std::map<std::string, std::string> values;

    Value Get(const std::string& key) const;
};

// A file of one line; its time is that of the file.
struct SingleValue {
    Presence presence = Presence::kAbsent;
    Value value;
    std::time_t written = 0;
};

enum class DaemonState {
    kNeverStarted,  // no pid file
    kRunning,
    kDead,     // a pid file, and no such process
    kUnknown,  // a copied tree without /proc
};

// Which queries the daemon runs for this modem, told by the keys it publishes.
enum class Card { kUnknown, kLte, kSierra881, kOther };

struct Spool {
    bool exists = false;
    long long files = 0;
    std::time_t oldest = 0;  // of the files, by their age
};

struct PppSettings {
    bool file_exists = false;
    std::string apn;  // as the daemon reads it
    bool interface_enabled = true;
};

struct ProvisioningSettings {
    bool file_exists = false;
    bool sync_time = true;
    std::string debug_mode;
};

struct Snapshot {
    std::time_t now = 0;
    Statistics statistics;
    Card card = Card::kUnknown;
    SingleValue registration;  // wirelessactivation_status
    SingleValue signal_line;   // lightbar
    DaemonState daemon = DaemonState::kUnknown;
    int pid = 0;
    bool dialing = false;
    bool not_dialing = false;
    bool resetting = false;
    Spool sending, received, failed;
    PppSettings ppp;
    ProvisioningSettings provisioning;

    // The link. What the kernel does not say is absent: a copied tree has few of these.
    bool interface_exists = false;
    bool address_known = false;  // whether there is one is known
    std::string address;
    std::optional<long long> sent_bytes, received_bytes;
    std::optional<long long> uptime;  // seconds

    long long Age() const { return now - statistics.written; }
    Freshness StatisticsFreshness(long long max_age) const;
};

Snapshot TakeSnapshot(const Tree& tree, std::time_t now);

// All of the statistics: the first line, the last key of the card's list, whole lines.
bool IsWholeStatistics(const std::string& text);
Statistics ParseStatistics(const std::string& text, std::time_t modified);

}  // namespace modemctl

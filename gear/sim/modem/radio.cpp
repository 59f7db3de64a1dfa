#include "sim/modem/radio.h"

#include <algorithm>

namespace sim {

namespace {

struct AccessRow {
    Access access;
    const char* name;
    int sysinfo_mode;
    int nwrat_state;
};

constexpr AccessRow kAccesses[] = {
    {Access::kNone, "none", 0, 0},   {Access::kGsm, "gsm", 3, 6},   {Access::kEdge, "edge", 3, 6},
    {Access::kWcdma, "wcdma", 5, 3}, {Access::kHspa, "hspa", 5, 3}, {Access::kLte, "lte", 9, 8},
};

const AccessRow& Row(Access access) {
    for (const AccessRow& row : kAccesses) {
        if (row.access == access) return row;
    }
    return kAccesses[0];
}

}  // namespace

int Radio::Rssi() const {
    return HasSignal() ? -113 + 2 * csq : -113;
}

// A resource element carries a small share of the power of the whole band: 27 dB less at 10 MHz.
int Radio::Rsrp() const {
    return HasSignal() ? std::max(Rssi() - 27, -140) : -140;
}

int Radio::Rsrq() const {
    return HasSignal() ? -6 - (31 - csq) / 3 : -20;
}

double Radio::Ecio() const {
    return HasSignal() ? -2.5 - 0.5 * (31 - csq) : -31.5;
}

int Radio::SignalIndicator() const {
    if (csq == 99 || csq == 0) return 0;
    if (csq < 10) return 1;
    if (csq < 18) return 2;
    if (csq < 26) return 3;
    return csq < 30 ? 4 : 5;
}

int Radio::ServiceStatusOfSysinfo() const {
    if (HasService()) return 2;
    return access == Access::kNone ? 0 : 1;
}

int Radio::SystemModeOfSysinfo() const {
    return Row(access).sysinfo_mode;
}

int Radio::StateOfNwrat() const {
    return IsRegistered() ? Row(access).nwrat_state : 0;
}

void Radio::Register(Registration state) {
    registration = state;
    if (IsRegistered()) {
        if (access == Access::kNone) access = best_access;
    } else if (state != Registration::kDenied && state != Registration::kUnknown) {
        access = Access::kNone;
    }
    service_text.clear();
}

void Radio::LoseService() {
    access = Access::kNone;
    if (IsRegistered()) registration = Registration::kSearching;
}

void Radio::Insert(Sim state) {
    const bool was_ready = sim == Sim::kReady;
    sim = state;
    if (was_ready && sim != Sim::kReady) Register(Registration::kNotSearching);
    if (!was_ready && sim == Sim::kReady) Register(Registration::kHome);
}

const char* AccessName(Access access) {
    return Row(access).name;
}

bool ReadAccess(const std::string& word, Access* access) {
    for (const AccessRow& row : kAccesses) {
        if (word != row.name) continue;
        *access = row.access;
        return true;
    }
    return false;
}

const char* RegistrationName(Registration registration) {
    switch (registration) {
        case Registration::kNotSearching:
            return "not registered";
        case Registration::kHome:
            return "home";
        case Registration::kSearching:
            return "searching";
        case Registration::kDenied:
            return "denied";
        case Registration::kUnknown:
            return "unknown";
        case Registration::kRoaming:
            return "roaming";
    }
    return "unknown";
}

const char* SimName(Sim sim) {
    switch (sim) {
        case Sim::kReady:
            return "ready";
        case Sim::kAbsent:
            return "absent";
        case Sim::kLocked:
            return "locked";
    }
    return "absent";
}

}  // namespace sim

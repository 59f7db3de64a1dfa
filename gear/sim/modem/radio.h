// What the antenna sees: signal, kind of access, registration, cell, and the state of the SIM.
#pragma once

#include <string>

namespace sim {

enum class Access { kNone, kGsm, kEdge, kWcdma, kHspa, kLte };

// The <stat> values of +CREG, as TS 27.007 numbers them.
enum class Registration {
    kNotSearching = 0,
    kHome = 1,
    kSearching = 2,
    kDenied = 3,
    kUnknown = 4,
    kRoaming = 5
};

enum class Sim { kReady, kAbsent, kLocked };

struct Radio {
    int csq = 17;  // 0 to 31, or 99: not known; -113 dBm + 2 dB a step
    int ber = 99;  // 0 to 7, or 99
    Access access = Access::kLte;
    Access best_access = Access::kLte;  // what `register` returns to after a loss of service
    Registration registration = Registration::kHome;
    unsigned lac = 0x1A2B;
    unsigned cell = 0x01C3D400;
    Sim sim = Sim::kReady;
    std::string service_text;  // overrides the name of the access in the service answers

    bool IsRegistered() const {
        return registration == Registration::kHome || registration == Registration::kRoaming;
    }
    bool HasService() const {
        return IsRegistered() && access != Access::kNone && sim == Sim::kReady;
    }
    bool HasSignal() const { return csq != 99; }

    int Rssi() const;                    // dBm, negative
    int Rsrp() const;                    // dBm, negative
    int Rsrq() const;                    // dB, negative
    double Ecio() const;                 // dB, negative
    int SignalIndicator() const;         // the 0 to 5 of +CIND
    int ServiceStatusOfSysinfo() const;  // 0 none, 1 limited, 2 valid
    int SystemModeOfSysinfo() const;     // 0 none, 3 GSM, 5 WCDMA, 9 LTE
    int StateOfNwrat() const;            // 0 searching, 3 WCDMA, 6 GSM, 8 LTE

    void Register(Registration state);
    void LoseService();
    void Insert(Sim state);  // without a ready SIM there is no registration
};

const char* AccessName(Access access);  // "none", "gsm", "edge", "wcdma", "hspa", "lte"
bool ReadAccess(const std::string& word, Access* access);
const char* RegistrationName(Registration registration);
const char* SimName(Sim sim);

}  // namespace sim

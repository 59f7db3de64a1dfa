#include "modemctl/doctor_checks.h"

namespace modemctl {

const char* HealthWord(Health health) {
    switch (health) {
        case Health::kFine:
            return "fine";
        case Health::kNote:
            return "note";
        case Health::kBad:
            return "bad";
        case Health::kNotChecked:
            return "not checked";
    }
    return "";
}

Finding Fine(const std::string& what) {
    return {Health::kFine, what, ""};
}

Finding Note(const std::string& what, const std::string& mend) {
    return {Health::kNote, what, mend};
}

Finding Bad(const std::string& what, const std::string& mend) {
    return {Health::kBad, what, mend};
}

Finding NotChecked(const std::string& why) {
    return {Health::kNotChecked, why, ""};
}

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> all = {
        {"shell", CheckShell},
        {"helpers", CheckHelpers},
        {"port", CheckPort},
        {"port-users", CheckPortUsers},
        {"port-grabbers", CheckPortGrabbers},
        {"card", CheckCard},
        {"supervisor", CheckSupervisor},
        {"pid-file", CheckPidFile},
        {"log-daemon", CheckLogDaemon},
        {"space", CheckSpace},
        {"clock", CheckClock},
        {"ppp-file", CheckPppFile},
        {"provisioning-file", CheckProvisioningFile},
        {"apn", CheckApn},
        {"spool", CheckSpoolDirectories},
        {"spool-entries", CheckSpoolEntries},
        {"silent-port", CheckSilentPort},
        {"sent-bytes", CheckSentBytes},
        {"network-time", CheckNetworkTime},
        {"empty-level", CheckEmptyLevel},
        {"unknown-signal", CheckUnknownSignal},
        {"answers-in-step", CheckAnswersInStep},
        {"text-mode", CheckTextMode},
        {"listing", CheckListing},
        {"error-count", CheckErrorCount},
    };
    return all;
}

}  // namespace modemctl

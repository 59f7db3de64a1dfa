// What breaks an installation, as a table of checks. Each only looks; none changes anything.
#pragma once

#include <string>
#include <vector>

#include "modemctl/patient.h"

namespace modemctl {

enum class Health {
    kFine,
    kNote,        // works, but somebody should know
    kBad,         // breaks the installation, or will
    kNotChecked,  // cannot be seen here
};
const char* HealthWord(Health health);

struct Finding {
    Health health = Health::kNotChecked;
    std::string what;  // may hold foreign text
    std::string mend;  // one line, exact; empty for fine
};
Finding Fine(const std::string& what);
Finding Note(const std::string& what, const std::string& mend);
Finding Bad(const std::string& what, const std::string& mend);
Finding NotChecked(const std::string& why);

struct Check {
    const char* id;  // for scripts; never changes
    Finding (*look)(const Patient& patient);
};
const std::vector<Check>& AllChecks();

// The router: doctor_router.cpp
Finding CheckShell(const Patient& patient);
Finding CheckHelpers(const Patient& patient);
Finding CheckPort(const Patient& patient);
Finding CheckPortUsers(const Patient& patient);
Finding CheckPortGrabbers(const Patient& patient);
Finding CheckSupervisor(const Patient& patient);
Finding CheckLogDaemon(const Patient& patient);
Finding CheckSpace(const Patient& patient);
Finding CheckClock(const Patient& patient);

// The daemon's files: doctor_files.cpp
Finding CheckPidFile(const Patient& patient);
Finding CheckPppFile(const Patient& patient);
Finding CheckProvisioningFile(const Patient& patient);
Finding CheckApn(const Patient& patient);
Finding CheckSpoolDirectories(const Patient& patient);
Finding CheckSpoolEntries(const Patient& patient);

// What the modem says, and the known hazards: doctor_modem.cpp
Finding CheckCard(const Patient& patient);
Finding CheckSilentPort(const Patient& patient);
Finding CheckSentBytes(const Patient& patient);
Finding CheckNetworkTime(const Patient& patient);
Finding CheckEmptyLevel(const Patient& patient);
Finding CheckUnknownSignal(const Patient& patient);
Finding CheckAnswersInStep(const Patient& patient);
Finding CheckTextMode(const Patient& patient);
Finding CheckListing(const Patient& patient);
Finding CheckErrorCount(const Patient& patient);

}  // namespace modemctl

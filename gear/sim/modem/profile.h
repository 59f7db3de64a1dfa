// A model of modem as data: its settings, its answers, and a drive through town.
//
// A profile is a text file, read line by line:
//
//   include base                     another profile first; what follows overrides it
//   imei = 001017000000003           a setting
//   context 1 IP internet            a PDP context: number, type, APN
//   at 40s signal 12                 a step of the drive: time from its start, a control line
//   > AT!GSTATUS?                    the host says (a '*' at the end: whatever follows)
//   when access=lte                  only while this value or setting has this value; of several
//                                    lines all must hold
//   delay 30ms                       the time before the answer; 5 ms when not given
//   < System mode: LTE\tPS state: {ps}   the modem says, one line each
//   < OK                             the final result; without one the command ends in silence
//
// Of several answers to one command the first whose condition holds is given.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/modem/drive.h"
#include "sim/modem/state.h"
#include "sim/modem/text.h"

namespace sim {

constexpr Micros kUsualDelay = 5 * kMillisecond;

struct ScriptedAnswer {
    std::vector<std::pair<std::string, std::string>> when;  // name and value; all must hold
    Micros delay = kUsualDelay;
    std::vector<std::string> lines;  // information text, with values in braces
    std::string result;              // "OK", "ERROR", "+CME ERROR: 3"; empty: none
};

struct Profile {
    std::string name;
    Settings settings;
    std::map<int, PdpContext> contexts;
    std::vector<DriveStep> drive;                                          // in order of time
    std::unordered_map<std::string, std::vector<ScriptedAnswer>> answers;  // by NormaliseCommand
    std::vector<std::pair<std::string, std::vector<ScriptedAnswer>>> patterns;  // "AT+X=", answers
};

// A name such as "E362" is looked up in the profile directory; anything with a slash or a dot is
// the path of a file. Throws std::runtime_error with "file:line: why" on bad data.
Profile LoadProfile(const std::string& path_or_name);

// The names of the daemon's cards, each of which has a profile: "generic, 881, ..."
std::string ModelNames();

// Where names are looked up. By default the first of these that holds base.profile: beside the
// program's folder (../share/modemd/profiles), the folder it was installed to, the source's own.
void SetProfileDirectory(const std::string& directory);

}  // namespace sim

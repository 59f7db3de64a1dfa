// The spool as a program beside the daemon sees it: what waits, what came in, what was given up.
// Nothing in it is trusted: anybody's bytes are in the names, and an entry may be of any kind.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "modemctl/tree.h"

namespace modemctl {

enum class SpoolPlace { kReceived, kWaiting, kFailed };

constexpr SpoolPlace kSpoolPlaces[] = {SpoolPlace::kReceived, SpoolPlace::kWaiting,
                                       SpoolPlace::kFailed};
const char* PlaceWord(SpoolPlace place);       // "received", "waiting", "failed"
const char* PlaceDirectory(SpoolPlace place);  // with a slash at its end

enum class EntryKind { kFile, kLink, kDirectory, kOther, kGone };
const char* KindWord(EntryKind kind);

struct SpoolEntry {
    SpoolPlace place = SpoolPlace::kReceived;
    std::string name;
    EntryKind kind = EntryKind::kGone;
    long long size = 0;
    std::time_t changed = 0;  // its age counts from here, for the daemon, too
    std::time_t modified = 0;
    long long nanoseconds = 0;  // of the modification

    std::string Path() const { return PlaceDirectory(place) + name; }
};

// The entries, oldest name first; numbers at the end of a name count as numbers. False when the
// directory cannot be read.
bool ListSpool(const Tree& tree, SpoolPlace place, std::vector<SpoolEntry>& entries);
SpoolEntry LookAt(const Tree& tree, SpoolPlace place, const std::string& name);

enum class Readable {
    kGood,
    kUnfinished,  // being written: look again
    kNoMessage,   // no file, or not a message
};

// A message of either direction.
struct SpoolMessage {
    Readable readable = Readable::kNoMessage;
    std::string number;  // who sent it, or who shall have it
    std::string time;    // received: the network's stamp
    std::string text;
};

// Links are not followed, and of a huge file only the beginning is read.
SpoolMessage ReadMessage(const Tree& tree, const SpoolEntry& entry);

// A received file: three fields in their places, so that a line "FROM=" in the text forges nothing.
SpoolMessage ParseReceived(const std::string& file);
// A send file as the daemon reads it; the text as it stands behind "MSG=".
SpoolMessage ParseSendFile(const std::string& file);
std::string SendFileText(const std::string& number, const std::string& text);

// The entry's name as it was before the daemon gave it up and put the time behind it.
std::string NameBeforeFailure(const std::string& name);
bool IsFailureOf(const std::string& failed_name, const std::string& name);

// A person may write a name as it is, as it is shown, or with its place in front: "failed/NAME".
// False, with a complaint, when there is none or more than one.
bool FindEntry(const Tree& tree, const std::string& typed, SpoolEntry& entry,
               std::string& complaint);

}  // namespace modemctl

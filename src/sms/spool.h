// The three spool directories that the daemon shares with other programs: what is in them, how
// the files look, and when they are thrown away.
//
// Anybody may write below /tmp: a spool directory that is reached through somebody else's link is
// refused, and counts as one that cannot be listed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "state/published.h"

inline constexpr const char* kSmsFailDirectory = published::kSmsFailDirectory;
inline constexpr const char* kSmsReceiveDirectory = published::kSmsReceiveDirectory;
inline constexpr const char* kSmsSendDirectory = published::kSmsSendDirectory;

// True unless an element of the path below /tmp is a link that belongs neither to root nor to the
// daemon's own user; such a link is logged. A path that does not exist is safe.
bool IsSafeSpoolPath(const std::string& directory);

// Runs one mkdir -p for all of them; does nothing when one of them is not safe.
void MakeSpoolDirectories(const std::vector<std::string>& directories);

// Deletes a file of a spool directory, unless the directory has stopped being safe since it was
// listed. A failure, as with a subdirectory, goes unnoticed.
void DeleteSpoolFile(const std::string& directory, const std::string& name);

// Takes a name; false ends the listing.
using NameVisitor = std::function<bool(const std::string& name)>;

// Hands every entry but "." and ".." to `visit`, of whatever type, in the order the system returns
// them. One name at a time, so that a spool of a hundred thousand files costs no memory; the entry
// that is visited may be deleted. Returns 0, or the errno of the directory that cannot be opened.
int ReadSmsDirectory(const std::string& directory, const NameVisitor& visit);

// Fills number and message from a send file: the TO entry without white space, and all that stands
// behind the first "MSG=", with its last character doubled. True when there is a "MSG="; a missing
// TO is logged, leaves `to` as it was and still counts as usable.
bool ReadSmsSendFile(const std::string& path, std::string& to, std::string& message);

// Deletes what has not changed its status for more than a day. Both do nothing while
// g_Cp_SmsCleanupTimer is counting, unless the debug level is not zero.
void DeleteOldSendSmSFiles();  // send, then send_fail
void DeleteOldRecvSmSFiles();  // recv

// The same for one directory, without asking the timer. The path ends with a slash.
void DeleteOldSmSFiles(const std::string& directory);

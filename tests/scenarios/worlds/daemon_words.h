// All that the daemon may say and touch: its writes to the port, its shell lines, its files. What
// is on no list is a fault, however harmless it looks.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "state/cards.h"

namespace worlds {

// What others put where the daemon finds it, as it may come back in the daemon's words.
struct Given {
    CardType card = kCardGeneric;
    bool polls_indicators = false;   // AT+CIND? in place of AT+CSQ
    std::set<std::string> apns;      // that may go to the modem
    std::set<std::string> numbers;   // of send files
    std::set<std::string> messages;  // of send files, as they may be sent
    std::set<std::string> names;     // of send files
};

// The commands of this card that are always the same text.
std::vector<std::string> CommandsOf(CardType card);

// One write to the port: a command, a canned command of 80 bytes, a message, or half a line end.
bool IsKnownWrite(const Given& given, const std::string& bytes);
bool IsKnownShellLine(const Given& given, const std::string& line);
// A file that the daemon writes or removes.
bool IsKnownPath(const std::string& path);

// The words that a shell makes of a line of plain characters, single quotes and escaped single
// quotes. Nothing at all when the line has anything else in it.
std::vector<std::string> PlainShellWords(const std::string& line);

}  // namespace worlds

// Received messages: from the modem's store through the queue into files.
#pragma once

#include <cstdint>
#include <string>

struct SmsMessage {
    std::int32_t index = 0;  // not used
    std::string from;        // the number without quotes and "+"
    std::string time;        // as the modem prints it: date, "-", time
    std::string text;        // each line with its newline
};

// At start-up: does the modem take text mode? Only the Sierra 881 is asked.
void CheckCmgfSupport();

// The receive pass: lists the unread messages, writes each as a file, and has the modem delete
// what it then holds as read.
void CheckReceiveSmS();

// Writes the queue to files, oldest first, and empties it. A file that cannot be written is not
// noticed: its text is in the system log.
void WriteOutQueuedSmsMessages();

// Unread and stored unsent messages stay.
void DeleteReadSmsMessages();

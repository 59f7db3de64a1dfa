// Spooled messages: from send files to the modem, with retries.
#pragma once

#include <string>

// The send pass: takes the first file of the send directory, one file a pass. Sent: the file is
// deleted. Failed: tried again after 30 s; the third failure in a row moves it to send_fail.
void CheckSendSmS();

// Sends one message, cut at 150 characters. False when the modem showed an error.
bool SendSmSMessage(const std::string& to, const std::string& text);

// The message reference behind "+CMGS: " in a reply; the slot is untouched when there is none.
bool GetCmsgSlotNum(const std::string& reply, std::string& slot);

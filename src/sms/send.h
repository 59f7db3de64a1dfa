// Spooled messages: from send files to the modem, with retries.
#pragma once

#include <string>

// The send pass: takes the first file of the send directory, one file a pass. Sent: the file is
// deleted. Failed: tried again after 30 s; the third failure in a row moves it to send_fail.
void CheckSendSmS();

// Sends one message in text mode, AT+CMGS (3GPP 27.005), cut at 150 bytes; number and text go out
// as they stand. False when the modem answered ERROR to the number or +CMS ERROR to the text; one
// that says nothing counts as having taken it.
bool SendSmSMessage(const std::string& to, const std::string& text);

// The message reference, <mr>, behind "+CMGS: " in a reply. False, with the slot untouched, when
// there is none.
bool GetCmsgSlotNum(const std::string& reply, std::string& slot);

// What the numbers of a QMI status mean.

#include "connection/qmi_texts.h"

#include "support/code_text.h"
#include "support/text.h"

namespace {

constexpr CodeText kQmiResults[] = {
    {1, "Message incorrect or corrupt. (1)"},
    {2, "Device could not allocate memory to formulate response. (2)"},
    {3, "Unexpected error occurred during processing. (3)"},
    {10, "Specified configured profile index does not exist. (10)"},
    {14, "Data call failed. (14)"},
    {26, "Control point has already started the network interface. (26)"},
    {28, "Invalid PDP type. (28)"},
    {29, "Invalid technology preference. (29)"},
};

// The byte 0x96 in text 5 is an en dash in code page 1252 and no UTF-8: deliberate, the web page
// is served in that code page. Text 9 has no blank before its number, which stays so.
// Oddity end-reason-no-utf-8: read the statistics as bytes: end reason 5 holds the byte 0x96.
constexpr CodeText kCallEndReasons[] = {
    {1, "Reason unspecified (1)"},
    {2, "Client ended the call (2)"},
    {3, "Phone has no service (3)"},
    {4, "Call has ended abnormally (4)"},
    {5, "Received release from BS \x96 no reason given (5)"},
    {6, "Access attempt already in progress (6)"},
    {7, "Access failure for reason other than the above (7)"},
    {8, "Call rejected because of redirection or handoff (8)"},
    {9, "Call failed because close is in progress(9)"},
    {10, "Authentication failed (10)"},
};

}  // namespace

void DescribeQmiResult(std::string& text) {
    if (IsInteger(text)) DescribeCode(kQmiResults, ToInt(text), text);
}

void DescribeCallEndReason(std::string& text) {
    DescribeCode(kCallEndReasons, ToInt(text), text);
}

// Texts for the numbers of a QMI status, decimal, as $NWQMISTATUS prints them. A number without a
// text stays as the modem printed it.
#pragma once

#include <string>

// A QMI result code, changed in place: "14" becomes "Data call failed. (14)".
void DescribeQmiResult(std::string& text);

// A call end reason, changed in place: "3" becomes "Phone has no service (3)". Its leading digits
// count.
void DescribeCallEndReason(std::string& text);

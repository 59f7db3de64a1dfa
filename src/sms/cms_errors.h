// Texts for the numbers of +CMS ERROR (3GPP 27.005).
#pragma once

#include <string>

// "CMS error #330: SMSC (message service center) address unknown". Codes outside the table, and
// outside 0 to 512, are an "Undocumented error".
std::string CmsErrorText(int code);

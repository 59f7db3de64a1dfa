// Cutting values out of single lines of an answer. None of these touches the port.
#pragma once

#include <string>
#include <string_view>

// The value becomes the rest of the line behind the needle. Returns 1, or 0 with the value
// untouched when the line does not hold the needle.
int ExtractAfterNeedle(const std::string& line, std::string_view needle, std::string& value);

// For "LABEL1 value1 LABEL2 value2" lines. Returns 1, or 0 with both values untouched when a
// needle is missing. value1 is exact only when needle1 begins the line; see the implementation.
int ExtractAroundNeedles(const std::string& line, std::string_view needle1,
                         std::string_view needle2, std::string& value1, std::string& value2);

// The text behind "+CMS ERROR: " (3GPP 27.005), up to the end of `text`: a number with its line end
// and whatever follows. Returns 1, or 0 with the code untouched.
int GetCmsErrorCode(const std::string& text, std::string& code);

// 0, with a warning in the log, when the service text holds "No "; else 1. "Limited Service" and
// the empty text are good.
int haveValidService(const std::string& service);

// Gives a magnitude that was reported without sign its "-"; "0" and whatever is no number stay.
void NegateNumberText(std::string& text);

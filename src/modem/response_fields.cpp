// Values out of single lines, with the traces that level 2 shows of them.

#include "modem/response_fields.h"

#include "support/system_log.h"
#include "support/text.h"

namespace {

void LogNeedle(int number, int position, int length) {
    LogAbove(1, "DEBUG: Needle%d (pos %d-%d), length=%d", number, position, position + length - 1,
             length);
}

void LogValue(int number, const std::string& value, int start, int expected_length) {
    LogAbove(1, "DEBUG: Value%d=\"%s\" (pos start %d), expected length=%d, real length=%d", number,
             value.c_str(), start, expected_length, static_cast<int>(value.size()));
}

}  // namespace

int ExtractAfterNeedle(const std::string& line, std::string_view needle, std::string& value) {
    const auto found = line.find(needle);
    if (found == std::string::npos) return 0;
    const auto position = static_cast<int>(found);
    const auto length = static_cast<int>(needle.size());
    LogAbove(1, "DEBUG: In Line \"%s\" found needle", line.c_str());
    LogNeedle(1, position, length);
    const std::string rest = line.substr(found + needle.size());
    LogValue(1, rest, position + length, static_cast<int>(line.size()) - length);
    value = rest;
    return 1;
}

int ExtractAroundNeedles(const std::string& line, std::string_view needle1,
                         std::string_view needle2, std::string& value1, std::string& value2) {
    const auto found1 = line.find(needle1);
    const auto found2 = line.find(needle2);
    if (found1 == std::string::npos || found2 == std::string::npos) return 0;

    const auto p1 = static_cast<int>(found1);
    const auto p2 = static_cast<int>(found2);
    const auto length1 = static_cast<int>(needle1.size());
    const auto length2 = static_cast<int>(needle2.size());
    LogAbove(1, "DEBUG: In Line \"%s\" found Start and stop point", line.c_str());
    LogNeedle(1, p1, length1);
    LogNeedle(2, p2, length2);

    // The length leaves p1 out, deliberately: when needle1 is not at the start of the line, value1
    // runs p1 characters into needle2, and the readers of the status file know it so. A negative
    // length means the rest of the line.
    // Oddity first-value-runs-on: on an indented line a value holds some of the next label.
    const int expected1 = p2 - length1;
    const std::string first =
        line.substr(found1 + needle1.size(),
                    expected1 < 0 ? std::string::npos : static_cast<std::size_t>(expected1));
    LogValue(1, first, p1 + length1, expected1);
    const std::string second = line.substr(found2 + needle2.size());
    LogValue(2, second, p2 + length2, static_cast<int>(line.size()) - (p2 + length2));
    value1 = first;
    value2 = second;
    return 1;
}

int GetCmsErrorCode(const std::string& text, std::string& code) {
    return ExtractAfterNeedle(text, "+CMS ERROR: ", code);
}

int haveValidService(const std::string& service) {
    if (Contains(service, "No ")) {
        Log("Warning: Modem reports bad service : '%s'", service.c_str());
        return 0;
    }
    LogDebug("DEBUG: haveValidService() Good service '%s'", service.c_str());
    return 1;
}

// The empty text counts as a number and becomes "-": deliberate, the signal display shows it as
// "no reading".
// Oddity empty-signal-is-minus: an RSSI of "-" is no reading.
void NegateNumberText(std::string& text) {
    if (!IsInteger(text) || text == "0" || (!text.empty() && text[0] == '-')) return;
    text.insert(0, 1, '-');
}

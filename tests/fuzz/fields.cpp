// Single texts: values cut out of lines, cleaned, tested, converted and quoted.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <string>

#include "connection/qmi_texts.h"
#include "fuzz_main.h"
#include "modem/response_fields.h"
#include "scenarios/worlds/daemon_words.h"
#include "sms/cms_errors.h"
#include "sms/send.h"
#include "status/card_statistics.h"
#include "support/shell.h"
#include "support/text.h"

namespace {

constexpr char kUntouched[] = "untouched";

void CutAfter(const std::string& line, const std::string& needle) {
    std::string value = kUntouched;
    const auto found = line.find(needle);
    const int result = ExtractAfterNeedle(line, needle, value);
    Must(result == (found != std::string::npos ? 1 : 0), "a needle is found when it is there");
    const std::string wanted = result == 1 ? line.substr(found + needle.size()) : kUntouched;
    Must(value == wanted, "the value is the rest of the line");
    std::string code = kUntouched;
    if (GetCmsErrorCode(line, code) == 0) Must(code == kUntouched, "no code, no change");
    std::string slot = kUntouched;
    Must(GetCmsgSlotNum(line, slot) == (slot != kUntouched), "the slot is told when it is found");
}

void CutAround(const std::string& line, const std::string& first, const std::string& second) {
    std::string value1 = kUntouched;
    std::string value2 = kUntouched;
    if (ExtractAroundNeedles(line, first, second, value1, value2) == 0) {
        Must(value1 == kUntouched && value2 == kUntouched, "no needles, no change");
    } else {
        Must(Contains(line, value1) && Contains(line, value2), "both values are in the line");
    }
}

void Clean(const std::string& text) {
    std::string clean = text;
    CleanWhiteSpace(clean);
    Must(clean.find_first_of(" \t\r\n") == std::string::npos, "no white space is left");
    std::string trimmed = text;
    Trim(trimmed);
    std::string again = trimmed;
    Trim(again);
    Must(Contains(text, trimmed) && again == trimmed, "trimming is done once");
    std::string lower = text;
    ToLower(lower);
    Must(lower.size() == text.size(), "lower case keeps the length");
    Must(Format("%s", text.c_str()) == text.c_str(), "a format keeps its text");
}

void Convert(const std::string& text) {
    std::string negated = text;
    NegateNumberText(negated);
    Must(negated == text || negated == "-" + text, "only a sign is added");
    std::string result = text;
    DescribeQmiResult(result);
    std::string reason = text;
    DescribeCallEndReason(reason);
    Must(!Contains(CmsErrorText(ToInt(text)), "\n"), "an error is one line");
    Must(IsInteger(CsqToRssi(Format("%d", ToInt(text)), text)), "an RSSI is a number");
    Must(haveValidService(text) == (Contains(text, "No ") ? 0 : 1), "only \"No \" is bad service");
}

void Quote(const std::string& text) {
    std::string word = text;
    word.erase(std::remove(word.begin(), word.end(), '\0'), word.end());
    const std::vector<std::string> words = worlds::PlainShellWords("mv " + ShellWord(word));
    Must(words.size() == 2 && words[1] == word, "the shell sees one word");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const FreshDaemon daemon(input.ConsumeIntegral<std::uint8_t>());
    const std::string first = input.ConsumeRandomLengthString(20);
    const std::string second = input.ConsumeRandomLengthString(20);
    const std::string text = input.ConsumeRemainingBytesAsString();
    CutAfter(text, first);
    CutAround(text, first, second);
    Clean(text);
    Convert(text);
    Quote(text);
}

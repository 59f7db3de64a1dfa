#include "connection/qmi_texts.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

std::string Result(std::string text) {
    DescribeQmiResult(text);
    return text;
}

std::string EndReason(std::string text) {
    DescribeCallEndReason(text);
    return text;
}

const std::map<int, std::string> kResults = {
    {1, "Message incorrect or corrupt. (1)"},
    {2, "Device could not allocate memory to formulate response. (2)"},
    {3, "Unexpected error occurred during processing. (3)"},
    {10, "Specified configured profile index does not exist. (10)"},
    {14, "Data call failed. (14)"},
    {26, "Control point has already started the network interface. (26)"},
    {28, "Invalid PDP type. (28)"},
    {29, "Invalid technology preference. (29)"},
};

TEST(QmiResult, EveryNumberUpTo40ReadsAsListedOrAsItCame) {
    for (int code = 0; code <= 40; ++code) {
        const std::string number = std::to_string(code);
        SCOPED_TRACE(number);
        const auto row = kResults.find(code);
        EXPECT_EQ(Result(number), row != kResults.end() ? row->second : number);
    }
}

TEST(QmiResult, WhatIsNoNumberStaysAsItCame) {
    for (const char* text : {"Unknown", "", "-", "14x", " 14", "1 4", "+1", "0x1", "1.", "--1"}) {
        EXPECT_EQ(Result(text), text);
    }
}

TEST(QmiResult, NumbersOutsideTheTableStay) {
    for (const char* text : {"-1", "-14", "30", "99", "1000", "2147483647"}) {
        EXPECT_EQ(Result(text), text);
    }
}

TEST(QmiResult, LeadingZerosDoNotHideACode) {
    EXPECT_EQ(Result("014"), "Data call failed. (14)");
    EXPECT_EQ(Result("0001"), "Message incorrect or corrupt. (1)");
}

TEST(QmiResult, ANumberTooLongForAnyIntegerStays) {
    const std::string huge(60, '9');
    EXPECT_EQ(Result(huge), huge);
}

const std::map<int, std::string> kEndReasons = {
    {1, "Reason unspecified (1)"},
    {2, "Client ended the call (2)"},
    {3, "Phone has no service (3)"},
    {4, "Call has ended abnormally (4)"},
    {5, std::string("Received release from BS ") + '\x96' + " no reason given (5)"},
    {6, "Access attempt already in progress (6)"},
    {7, "Access failure for reason other than the above (7)"},
    {8, "Call rejected because of redirection or handoff (8)"},
    {9, "Call failed because close is in progress(9)"},
    {10, "Authentication failed (10)"},
};

TEST(CallEndReason, EveryNumberUpTo20ReadsAsListedOrAsItCame) {
    for (int code = 0; code <= 20; ++code) {
        const std::string number = std::to_string(code);
        SCOPED_TRACE(number);
        const auto row = kEndReasons.find(code);
        EXPECT_EQ(EndReason(number), row != kEndReasons.end() ? row->second : number);
    }
}

// Guards oddity end-reason-no-utf-8.
TEST(CallEndReason, TheDashOfFiveIsTheSingleByte96) {
    const std::string text = EndReason("5");
    EXPECT_EQ(text.size(), 46U);
    EXPECT_EQ(static_cast<unsigned char>(text[25]), 0x96U);
}

TEST(CallEndReason, NineKeepsItsMissingBlank) {
    EXPECT_EQ(EndReason("9"), "Call failed because close is in progress(9)");
}

TEST(CallEndReason, TheLeadingNumberCounts) {
    EXPECT_EQ(EndReason("3,rest"), "Phone has no service (3)");
    EXPECT_EQ(EndReason(" 7"), "Access failure for reason other than the above (7)");
    EXPECT_EQ(EndReason("+2"), "Client ended the call (2)");
}

TEST(CallEndReason, WhatIsNoNumberOrNotListedStays) {
    for (const char* text : {"Unknown", "", "-1", "11", "x1", "0"})
        EXPECT_EQ(EndReason(text), text);
}

}  // namespace

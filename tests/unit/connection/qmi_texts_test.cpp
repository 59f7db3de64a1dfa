#include "connection/qmi_texts.h"

#include <gtest/gtest.h>

#include <string>

#include "seal.h"

namespace {

std::string Result(std::string text) {
    DescribeQmiResult(text);
    return text;
}

std::string EndReason(std::string text) {
    DescribeCallEndReason(text);
    return text;
}

// The texts stand once, in qmi_texts.cpp: who changes one on purpose changes the seal, too.
TEST(QmiResult, EveryNumberUpTo40ReadsAsListedOrAsItCame) {
    EXPECT_EQ(SealOfLines(40, Result), 0x50ebd66e3307617e);
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

TEST(CallEndReason, EveryNumberUpTo20ReadsAsListedOrAsItCame) {
    EXPECT_EQ(SealOfLines(20, EndReason), 0xd7881b91712ae135);
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

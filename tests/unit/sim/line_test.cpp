#include "sim/modem/line.h"

#include <gtest/gtest.h>

namespace {

using sim::kNever;

TEST(Line, WithoutARateEverythingArrivesAtOnce) {
    sim::Line line;
    EXPECT_EQ(line.Next(), kNever);
    line.Put(std::string(1000, 'x'), 7);
    EXPECT_EQ(line.Next(), 7);
    EXPECT_EQ(line.Take(7).size(), 1000U);
    EXPECT_EQ(line.Next(), kNever);
}

TEST(Line, At115200AByteTakes87Microseconds) {
    sim::Line line;
    line.SetRate(115200);
    line.Put("abc", 1000);
    EXPECT_EQ(line.Next(), 1000 + 3 * 87);
    EXPECT_EQ(line.Take(1086), "");
    EXPECT_EQ(line.Take(1087), "a");
    EXPECT_EQ(line.Take(2000), "bc");
    line.Put("d", 2000);
    EXPECT_EQ(line.Next(), 2087);
}

TEST(Line, TheReceiverTellsOfSixteenAtATime) {
    sim::Line line;
    line.SetRate(115200);
    line.Put(std::string(20, 'x'), 0);
    EXPECT_EQ(line.Next(), 16 * 87);
    EXPECT_EQ(line.Take(line.Next()).size(), 16U);
    EXPECT_EQ(line.Next(), 20 * 87);
    line.Clear();
    EXPECT_EQ(line.Next(), kNever);
}

TEST(Line, WhatIsPutBehindWaitsItsTurn) {
    sim::Line line;
    line.SetRate(115200);
    line.Put("ab", 0);
    line.Put("c", 1);
    EXPECT_EQ(line.Take(2 * 87), "ab");
    line.Put("d", 2 * 87);
    EXPECT_EQ(line.Take(3 * 87), "c");
    EXPECT_EQ(line.Take(4 * 87), "d");
}

}  // namespace

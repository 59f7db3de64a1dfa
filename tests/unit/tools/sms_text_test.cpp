#include "modemctl/sms_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace modemctl {
namespace {

using ::testing::ElementsAre;

TEST(OnAir, RepeatsTheLastCharacterAndCutsAt150) {
    EXPECT_EQ(OnAir("Hi"), "Hii");
    EXPECT_EQ(OnAir("Hi\n"), "Hi\n\n");
    EXPECT_EQ(OnAir(std::string(149, 'a')), std::string(150, 'a'));
    EXPECT_EQ(OnAir(std::string(149, 'a') + "b"), std::string(149, 'a') + "b");
    EXPECT_EQ(OnAir(std::string(200, 'a')), std::string(150, 'a'));
}

TEST(OnAir, OfAnEmptyTextIsTheEqualsSignOfItsLabel) {
    EXPECT_EQ(OnAir(""), "=");
}

TEST(Compensated, IsExactForTextsThatEndTwiceAndForFullOnes) {
    EXPECT_EQ(Compensated("Hall").file_text, "Hal");
    EXPECT_TRUE(Compensated("Hall").IsExact());
    EXPECT_TRUE(Compensated("Well..").IsExact());
    EXPECT_TRUE(Compensated("lines\n\n").IsExact());
    const std::string full = std::string(149, 'a') + "b";
    EXPECT_EQ(Compensated(full).file_text, full);
    EXPECT_TRUE(Compensated(full).IsExact());
}

TEST(Compensated, EndsInBlanksThatNobodySees) {
    EXPECT_EQ(Compensated("Hi").on_air, "Hi  ");
    EXPECT_EQ(Compensated("a").on_air, "a  ");
    EXPECT_EQ(Compensated("Hi ").on_air, "Hi  ");
    EXPECT_EQ(Compensated("Hi\n").on_air, "Hi\n\n");
    EXPECT_EQ(Compensated(std::string(148, 'a') + "b").on_air, std::string(148, 'a') + "b ");
}

// The receiver sees the whole text, and behind it blanks or line ends at most.
TEST(Compensated, NeverLosesOrInventsALetter) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const std::size_t length = 1 + random() % kLongestOnAir;
        for (std::size_t c = 0; c < length; ++c) text += "ab \n."[random() % 5];
        const SmsPiece piece = Compensated(text);
        ASSERT_EQ(piece.on_air, OnAir(piece.file_text));
        ASSERT_EQ(piece.on_air.substr(0, text.size()), text);
        const std::string rest = piece.on_air.substr(text.size());
        ASSERT_EQ(rest.find_first_not_of(" \n"), std::string::npos) << text;
        ASSERT_LE(rest.size(), 2U);
    }
}

std::string Joined(const std::vector<SmsPiece>& pieces) {
    std::string text;
    for (const SmsPiece& piece : pieces) text += piece.text.substr(piece.text.find(") ") + 2);
    return text;
}

TEST(SplitText, LeavesAShortTextAlone) {
    const auto pieces = SplitText(std::string(150, 'x'));
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces[0].text, std::string(150, 'x'));
}

TEST(SplitText, NumbersThePiecesAndLosesNothing) {
    for (const std::size_t length : {151U, 287U, 288U, 289U, 1296U, 1297U, 1420U, 9000U}) {
        std::string text;
        for (std::size_t i = 0; i < length; ++i) text += i % 9 == 8 ? ' ' : 'a';
        const auto pieces = SplitText(text);
        ASSERT_FALSE(pieces.empty()) << length;
        EXPECT_EQ(Joined(pieces), text);
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            const std::string head =
                "(" + std::to_string(i + 1) + "/" + std::to_string(pieces.size()) + ") ";
            EXPECT_EQ(pieces[i].text.substr(0, head.size()), head);
            EXPECT_LE(pieces[i].text.size(), kLongestOnAir);
            EXPECT_LE(pieces[i].on_air.size(), kLongestOnAir);
        }
    }
}

TEST(SplitText, CutsBehindAWordWhereThatCostsLittle) {
    const auto pieces = SplitText(std::string(140, 'a') + " " + std::string(60, 'b'));
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[0].text, "(1/2) " + std::string(140, 'a') + " ");
    EXPECT_EQ(SplitText(std::string(300, 'a'))[0].text, "(1/3) " + std::string(144, 'a'));
}

TEST(SplitText, GivesUpBeyond99) {
    constexpr std::size_t kMost = 9 * 143 + 90 * 142;  // the first nine heads are shorter
    EXPECT_TRUE(SplitText(std::string(kMost + 1, 'a')).empty());
    EXPECT_EQ(SplitText(std::string(kMost, 'a')).size(), 99U);
}

std::vector<std::string> Bad(const std::string& text) {
    std::vector<std::string> found;
    for (const BadCharacter& bad : FindBadCharacters(text)) found.push_back(bad.text);
    return found;
}

TEST(BadCharacters, AreControlsAndWhateverIsNotAscii) {
    EXPECT_TRUE(Bad("plain ~!@ text\n").empty());
    EXPECT_THAT(Bad("a\x1a"), ElementsAre("\x1a"));
    EXPECT_THAT(Bad("\x1b[2J"), ElementsAre("\x1b"));
    EXPECT_THAT(Bad("a\r\nb\tc\x7f"), ElementsAre("\r", "\t", "\x7f"));
    EXPECT_THAT(Bad(std::string("a\0b", 3)), ElementsAre(std::string(1, '\0')));
    EXPECT_THAT(Bad("gr\xc3\xbc\xc3\x9f \x96"), ElementsAre("\xc3\xbc", "\xc3\x9f", "\x96"));
}

std::string Replaced(const std::string& text) {
    return WithSubstitutes(text, FindBadCharacters(text));
}

TEST(BadCharacters, HaveSubstitutesThatAreReadAlike) {
    EXPECT_EQ(Replaced("Gr\xc3\xbc\xc3\x9f"
                       "e \xe2\x80\x93 5 \xe2\x82\xac"),
              "Gruesse - 5 EUR");
    EXPECT_EQ(Replaced("one\r\ntwo\tthree"), "one\ntwo three");
    EXPECT_EQ(Replaced("\xe6\x97\xa5\x1a\xff"), "???");
    EXPECT_TRUE(FindBadCharacters(Replaced("any \xc3\xa9\x1b\xf0\x9f\x98\x80")).empty());
}

TEST(Text, ThatAModemWouldChangeIsTold) {
    EXPECT_EQ(DoubtfulCharacters("plain (text) 5% & more"), "");
    EXPECT_EQ(DoubtfulCharacters("a@b_c@d"), "@_");
}

TEST(Text, ThatReadsLikeAFailureIsTold) {
    EXPECT_TRUE(LooksLikeFailure("see +CMS ERROR: 38 in the log"));
    EXPECT_FALSE(LooksLikeFailure("CMS ERROR: 38"));
}

std::string Number(const std::string& typed) {
    std::string number;
    return CleanNumber(typed, number) ? number : "refused";
}

TEST(Number, KeepsDigitsAndOneLeadingPlus) {
    EXPECT_EQ(Number("+1 (555) 123-4567"), "+15551234567");
    EXPECT_EQ(Number("0171/55.50"), "01715550");
    EXPECT_EQ(Number("112"), "112");
}

TEST(Number, WithAnythingElseIsRefused) {
    for (const char* const typed : {"", "+", "5", "+5", "1+2", "++12", "12a", "12\"", "12\r", "12;",
                                    "1234567890123456", "\xd9\xa1\xd9\xa2", "12\n+CMGD=0,4"}) {
        EXPECT_EQ(Number(typed), "refused") << typed;
    }
}

}  // namespace
}  // namespace modemctl

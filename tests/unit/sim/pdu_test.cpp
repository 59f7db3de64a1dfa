#include "sim/modem/pdu.h"

#include <gtest/gtest.h>

#include "sim/modem/sms_alphabet.h"

namespace {

using sim::SmsState;

constexpr char kStamp[] = "26/03/14,09:15:02+00";

std::string TextOf(const std::string& text) {
    std::vector<unsigned char> septets;
    EXPECT_TRUE(sim::ToSeptets(text, &septets));
    return sim::FromSeptets(sim::Unpack(sim::Pack(septets), 0, septets.size()));
}

TEST(SmsAlphabet, SurvivesPacking) {
    for (const std::string text : {"", "a", "1234567", "12345678", "@\n\r", "Grüße für 5 €: [{~}]",
                                   "ΔΩ and more than one octet of eight septets"}) {
        EXPECT_EQ(TextOf(text), text);
    }
    std::vector<unsigned char> septets;
    EXPECT_FALSE(sim::ToSeptets("Привет", &septets));
    EXPECT_FALSE(sim::ToSeptets("\x1b", &septets)) << "the escape is no character";
}

TEST(SmsAlphabet, PacksEightSeptetsIntoSevenOctets) {
    std::vector<unsigned char> septets;
    sim::ToSeptets("hellohello", &septets);
    EXPECT_EQ(sim::ToHex(sim::Pack(septets)), "E8329BFD4697D9EC37");
}

TEST(SmsAlphabet, Ucs2HasPairsBeyondItsPlane) {
    EXPECT_EQ(sim::ToHex(sim::ToUcs2("é€😀")), "00E920ACD83DDE00");
    EXPECT_EQ(sim::FromUcs2(sim::ToUcs2("é€😀")), "é€😀");
    EXPECT_EQ(sim::ToHex(sim::ToUcs2("\xff\xfe")), "00FF00FE") << "no UTF-8: Latin-1";
    EXPECT_EQ(sim::ToHex(sim::ToUcs2("\xe2\x82")), "00E20082") << "cut off";
}

TEST(SmsAlphabet, HexIsWholeOrNothing) {
    sim::Octets octets;
    EXPECT_TRUE(sim::FromHex("0aFF", &octets));
    EXPECT_EQ(octets, (sim::Octets{0x0A, 0xFF}));
    EXPECT_FALSE(sim::FromHex("0", &octets));
    EXPECT_FALSE(sim::FromHex("0G", &octets));
}

TEST(DeliverPdu, TellsSenderCodingTimeAndText) {
    const sim::Pdu pdu =
        sim::DeliverPdu({SmsState::kUnread, "+12015550123", kStamp, "hellohello"}, "+12015550100");
    EXPECT_EQ(pdu.hex,
              "07912110550501F0"      // service centre
              "04"                    // deliver, no more of them
              "0B912110550521F3"      // sender
              "0000"                  // protocol, 7-bit alphabet
              "62304190512000"        // 26/03/14,09:15:02+00
              "0AE8329BFD4697D9EC37"  // ten septets
    );
    EXPECT_EQ(pdu.length, 28);
}

TEST(DeliverPdu, TakesUcs2WhereTheAlphabetDoesNotSuffice) {
    const std::string hex = sim::DeliverPdu({SmsState::kUnread, "150", kStamp, "Я"}, "").hex;
    EXPECT_EQ(hex,
              "0004038151F00008623041905120"
              "00"
              "02042F");
}

TEST(DeliverPdu, ANameIsASenderToo) {
    const std::string hex = sim::DeliverPdu({SmsState::kUnread, "Bank", kStamp, ""}, "").hex;
    EXPECT_EQ(hex.substr(0, 16), "000407D0C2B07B0D");
}

TEST(DeliverPdu, AZoneInTheWestHasABit) {
    const std::string hex =
        sim::DeliverPdu({SmsState::kUnread, "1", "26/03/14,09:15:02-20", ""}, "").hex;
    EXPECT_EQ(hex.substr(hex.size() - 16), "6230419051200A00");
}

TEST(DeliverPdu, CutsWhatDoesNotFitOneMessage) {
    const auto length = [](const std::string& text) {
        return sim::DeliverPdu({SmsState::kUnread, "1", kStamp, text}, "").length;
    };
    EXPECT_EQ(length(std::string(160, 'a')), length(std::string(100000, 'a')));
    EXPECT_EQ(length(std::string(70, '\xff')), length(std::string(1000, '\xff')));
}

TEST(SubmitPdu, IsReadWithEachCoding) {
    auto message = sim::ReadSubmitPdu("0001000B912110550521F300000AE8329BFD4697D9EC37", 22);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->to, "+12015550123");
    EXPECT_EQ(message->text, "hellohello");
    message = sim::ReadSubmitPdu(
        "0001000381"
        "51F0"
        "0008"
        "02042F",
        11);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->to, "150");
    EXPECT_EQ(message->text, "Я");
    message = sim::ReadSubmitPdu(
        "0001000381"
        "51F0"
        "0004"
        "024869",
        11);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->text, "Hi");
}

// The header of a part of a long message takes six octets, and its text begins at septet 7.
TEST(SubmitPdu, AHeaderIsNoText) {
    std::vector<unsigned char> septets(7, 0);
    for (const char c : std::string("part")) septets.push_back(static_cast<unsigned char>(c));
    sim::Octets octets = sim::Pack(septets);
    const sim::Octets header = {5, 0, 3, 42, 2, 1};
    std::copy(header.begin(), header.end(), octets.begin());
    const std::string hex =
        "0041000381"
        "51F0"
        "0000"
        "0B" +
        sim::ToHex(octets);
    const auto message = sim::ReadSubmitPdu(hex, static_cast<int>(hex.size() / 2) - 1);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->text, "part");
}

TEST(SubmitPdu, AnyCutIsRefusedOrReadWithoutHarm) {
    const std::string whole = "07912110550501F011000B912110550521F30000A70AE8329BFD4697D9EC37";
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(sim::ReadSubmitPdu(whole.substr(0, size), 23)) << size;
    }
    EXPECT_TRUE(sim::ReadSubmitPdu(whole, 23));
    EXPECT_FALSE(sim::ReadSubmitPdu("0004038151F000086230419051200002042F", 17))
        << "a received one";
    EXPECT_FALSE(sim::ReadSubmitPdu("FF00", 1));
}

}  // namespace

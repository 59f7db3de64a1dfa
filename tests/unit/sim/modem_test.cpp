#include "sim/modem/modem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bench_modem.h"

namespace {

using sim::kMillisecond;
using sim::kNever;
using sim::kSecond;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> HeardTexts(const sim::Modem& modem) {
    std::vector<std::string> texts;
    for (const sim::HeardCommand& heard : modem.Heard()) texts.push_back(heard.text);
    return texts;
}

TEST(Modem, EchoesUntilItIsToldNotTo) {
    BenchModem modem("generic", true);
    EXPECT_EQ(modem.Ask("AT"), "AT\r\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("ATE0"), "ATE0\r\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("ate1"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT"), "AT\r\r\nOK\r\n");
}

TEST(Modem, AnswersErrorToTheUnknownAndKeepsIt) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.Ask("AT+NOSUCH?"), "\r\nERROR\r\n");
    EXPECT_EQ(modem.Ask("AT$NWQMISTATUS"), "\r\nERROR\r\n") << "not a thing of this model";
    EXPECT_THAT(modem.Unexpected(), ElementsAre("AT+NOSUCH?", "AT$NWQMISTATUS"));
}

TEST(Modem, IgnoresLinesThatAreNoCommands) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.Ask("hello"), "");
    EXPECT_EQ(modem.Ask(""), "");
    EXPECT_THAT(modem.Unexpected(), ElementsAre());
    EXPECT_THAT(HeardTexts(modem), ElementsAre("hello"));
}

TEST(Modem, SeesThroughPaddingAndSmallLetters) {
    BenchModem modem("generic");
    std::string padded = "at+csq";
    padded.resize(80, '\0');
    EXPECT_EQ(modem.Ask(padded), Answered("+CSQ: 17,99"));
    EXPECT_THAT(HeardTexts(modem), ElementsAre("at+csq"));
}

TEST(Modem, AnswersWhenItIsTimeAndNotBefore) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.NextEvent(), kNever);
    modem.Receive("AT\r", 1000);
    EXPECT_EQ(modem.NextEvent(), 1000 + 5 * kMillisecond);
    EXPECT_EQ(modem.Transmit(5999), "");
    EXPECT_EQ(modem.Transmit(6000), "\r\nOK\r\n");
    EXPECT_EQ(modem.NextEvent(), kNever);
}

TEST(Modem, CommandsWaitForTheOneAtWork) {
    BenchModem modem("generic");
    modem.AnswerOnce("AT!SLOW", "\r\nslow\r\n", 3 * kSecond);
    modem.Receive("AT!SLOW\rAT+CSQ\r", 0);
    EXPECT_EQ(modem.Transmit(2 * kSecond), "");
    EXPECT_EQ(modem.Transmit(3 * kSecond), "\r\nslow\r\n");
    EXPECT_EQ(modem.Transmit(4 * kSecond), Answered("+CSQ: 17,99"));
    ASSERT_EQ(modem.Heard().size(), 2u);
    EXPECT_EQ(modem.Heard()[1].at, 3 * kSecond);
}

TEST(Modem, CommandsMayShareALine) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.Ask("AT+CMEE=1;+CREG=2;+CSQ;+CREG?"),
              Answered("+CSQ: 17,99\r\n+CREG: 2,1,\"1A2B\",\"01C3D400\""));
    EXPECT_EQ(modem.Ask("AT+CSQ;+NOSUCH;+CREG?"), "\r\n+CSQ: 17,99\r\n\r\nERROR\r\n");
}

TEST(Modem, OverridesGoOutByteForByte) {
    BenchModem modem("generic");
    modem.Answer("at+csq", "+CSQ: 5,99");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "+CSQ: 5,99");
    modem.AnswerOnce("AT+CSQ", "");
    modem.AnswerOnce("AT+CSQ", "\xff\xfe");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "\xff\xfe");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "+CSQ: 5,99");
    modem.Forget("AT+CSQ");
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 17,99"));
}

TEST(Modem, AnOverrideMayBeAPattern) {
    BenchModem modem("generic");
    modem.Answer("AT+C*", "any");
    modem.AnswerOnce("AT+CSQ", "one");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "one");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "any");
    EXPECT_EQ(modem.Ask("AT+CREG?"), "any");
    EXPECT_EQ(modem.Ask("AT"), "\r\nOK\r\n");
    modem.Forget("AT+C*");
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 17,99"));
}

TEST(Modem, AnOverriddenPromptIsFollowedByABody) {
    BenchModem modem("generic");
    modem.Ask("AT+CMGF=1");
    modem.Answer("AT+CMGS=*", "\r\n> ");
    modem.AnswerOnce("<body>", "\r\n+CMS ERROR: 500\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"1\""), "\r\n> ");
    EXPECT_EQ(modem.Ask("AT in a body is no command\x1a"), "\r\n+CMS ERROR: 500\r\n");
    EXPECT_THAT(modem.SentMessages(), ElementsAre());
}

TEST(Modem, SilenceSwallowsWhatIsSaidButItIsHeard) {
    BenchModem modem("generic", true);
    modem.Tell("silence 30s");
    EXPECT_EQ(modem.Ask("AT+CSQ", 10 * kSecond), "");
    EXPECT_EQ(modem.Tell("say \"^RSSI: 3\""), "ok");
    EXPECT_EQ(modem.Wait(20 * kSecond), "");
    EXPECT_EQ(modem.Ask("AT"), "AT\r\r\nOK\r\n");
    EXPECT_THAT(HeardTexts(modem), ElementsAre("AT+CSQ", "AT"));
}

TEST(Modem, AnAnswerDueInSilenceIsLost) {
    BenchModem modem("generic");
    modem.AnswerOnce("AT!SLOW", "slow", 2 * kSecond);
    modem.Receive("AT!SLOW\r", modem.now);
    modem.Tell("silence 5s");
    EXPECT_EQ(modem.Wait(10 * kSecond), "");
    EXPECT_EQ(modem.Ask("AT"), "\r\nOK\r\n");
}

TEST(Modem, UnpluggedItIsDeadAndPluggedItHasForgotten) {
    BenchModem modem("E362");
    modem.Ask("AT+CREG=2");
    modem.Tell("call up");
    modem.Tell("unplug");
    EXPECT_FALSE(modem.Plugged());
    EXPECT_EQ(modem.Ask("AT"), "");
    modem.Tell("plug");
    EXPECT_TRUE(modem.Plugged());
    EXPECT_EQ(modem.Ask("AT"), "AT\r\r\nOK\r\n");
    modem.SetEcho(false);
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 0,1"));
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS"), HasSubstr(" DISCONNECTED"));
}

TEST(Modem, UnsolicitedLinesWaitForTheEndOfABody) {
    BenchModem modem("881");
    modem.Ask("AT+CMGF=1");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n> ");
    modem.Tell("say \"^RSSI: 3\"");
    EXPECT_EQ(modem.Wait(kSecond), "");
    EXPECT_EQ(modem.Ask("Hi\x1a"), "\r\n+CMGS: 1\r\n\r\nOK\r\n\r\n^RSSI: 3\r\n");
}

TEST(Modem, NoiseIsTheSameForTheSameSeed) {
    const auto noise = [](std::uint64_t seed) {
        sim::PlayedModem modem(sim::LoadProfile("generic"), seed);
        modem.Control("garbage 200", 0);
        return modem.Transmit(0);
    };
    EXPECT_EQ(noise(7).size(), 200u);
    EXPECT_EQ(noise(7), noise(7));
    EXPECT_NE(noise(7), noise(8));
}

TEST(Modem, TheLogOfCommandsCanBeLimited) {
    BenchModem modem("generic");
    modem.SetHeardLimit(10);
    for (int i = 0; i < 1000; ++i) modem.Ask("AT+CSQ");
    modem.Ask("AT+CIND?");
    EXPECT_GE(modem.Heard().size(), 10u);
    EXPECT_LE(modem.Heard().size(), 21u);
    EXPECT_EQ(modem.Heard().back().text, "AT+CIND?");
    modem.SetHeardLimit(0);
    modem.ClearHeard();
    modem.Ask("AT");
    EXPECT_TRUE(modem.Heard().empty());
}

TEST(Modem, AFloodOfInputNeitherGrowsNorStopsIt) {
    BenchModem modem("generic");
    modem.AnswerOnce("AT!SLOW", "", kSecond);
    modem.Receive("AT!SLOW\r", 0);
    for (int i = 0; i < 100; ++i) modem.Receive(std::string(65536, 'x'), 0);
    modem.Wait(2 * kSecond);
    EXPECT_EQ(modem.Ask("\rAT"), "\r\nOK\r\n");
}

TEST(Modem, TimeThatStandsStillOrGoesBackDoesNoHarm) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.Transmit(10 * kSecond), "");
    modem.Receive("AT\r", 5 * kSecond);
    EXPECT_EQ(modem.Transmit(11 * kSecond), "\r\nOK\r\n");
}

TEST(Modem, ADayOfTheSameInputsGivesTheSameBytes) {
    const auto day = [] {
        BenchModem modem("881");
        modem.Tell("drive on");
        modem.Ask("AT+CREG=2");
        std::string all;
        for (int i = 0; i < 8640; ++i) all += modem.Ask("AT+CSQ", 10 * kSecond);
        return all;
    };
    const std::string first = day();
    EXPECT_EQ(first, day());
    EXPECT_THAT(first, HasSubstr("+CREG: 5,\"2F01\",\"000C0DE1\""));
    EXPECT_THAT(first, HasSubstr("+CSQ: 99,99"));
}

}  // namespace

// The moods: a modem that is as slow, as talkative and as odd as those in the field.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "bench_modem.h"

namespace {

using sim::kMillisecond;
using sim::kSecond;
using sim::Micros;
using testing::AllOf;
using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;
using testing::StartsWith;

Micros TimeToAnswer(BenchModem* modem, const std::string& command) {
    modem->Receive(command + "\r", modem->now);
    const Micros asked = modem->now;
    while (modem->Transmit(modem->now).find("OK\r\n") == std::string::npos) {
        modem->now = modem->NextEvent();
    }
    return modem->now - asked;
}

TEST(Pace, PoliteIsAlwaysTheSame) {
    BenchModem modem("881");
    for (int i = 0; i < 20; ++i) EXPECT_EQ(TimeToAnswer(&modem, "AT+CSQ"), 5 * kMillisecond);
}

TEST(Pace, PromptTakesWhatWasSeenInTheField) {
    BenchModem modem("881");
    ASSERT_EQ(modem.Tell("pace prompt"), "ok");
    std::vector<Micros> times;
    for (int i = 0; i < 1000; ++i) times.push_back(TimeToAnswer(&modem, "AT+CSQ"));
    EXPECT_THAT(times, testing::Each(AllOf(Ge(6 * kMillisecond), Le(200 * kMillisecond))));
    std::sort(times.begin(), times.end());
    EXPECT_LT(times[500], 25 * kMillisecond);
    EXPECT_GT(times[950], 90 * kMillisecond) << "the tail";
    EXPECT_GE(TimeToAnswer(&modem, "AT+CNUM"), 450 * kMillisecond);
}

TEST(Pace, SlowHasALongTail) {
    BenchModem modem("881");
    modem.Tell("pace slow");
    Micros longest = 0;
    for (int i = 0; i < 300; ++i) longest = std::max(longest, TimeToAnswer(&modem, "AT+CSQ"));
    EXPECT_GT(longest, 3 * kSecond);
    EXPECT_LE(longest, 8 * kSecond);
}

TEST(Pace, IsTheSameForTheSameSeed) {
    const auto times = [] {
        BenchModem modem("881");
        modem.Tell("pace slow");
        std::vector<Micros> all;
        for (int i = 0; i < 50; ++i) all.push_back(TimeToAnswer(&modem, "AT+CSQ"));
        return all;
    };
    EXPECT_EQ(times(), times());
}

TEST(Pace, AMessageTakesSecondsAndATextBeforeThePromptMayBeLost) {
    BenchModem modem("881");
    modem.Tell("pace prompt");
    modem.Ask("AT+CMGF=1");
    int lost = 0;
    for (int i = 0; i < 40; ++i) {
        modem.Receive("AT+CMGS=\"2015550100\"\r", modem.now);
        modem.Receive("early\x1a", modem.now);
        EXPECT_EQ(modem.Wait(200 * kMillisecond), "\r\n> ");
        EXPECT_EQ(modem.Wait(1700 * kMillisecond), "");
        if (modem.Wait(2 * kSecond).empty()) {
            ++lost;
            modem.Ask("\x1b");
        }
    }
    EXPECT_GT(lost, 0);
    EXPECT_LT(lost, 40);
    EXPECT_EQ(modem.SentMessages().size(), static_cast<std::size_t>(40 - lost));
}

TEST(Pieces, AListComesLineByLineWithPauses) {
    BenchModem modem("881");
    modem.Tell("set operators 30");
    const std::string whole = modem.Ask("AT+COPN");
    modem.Tell("pieces on");
    modem.Receive("AT+COPN\r", modem.now);
    std::string all;
    std::vector<Micros> times;
    while (modem.NextEvent() != sim::kNever) {
        modem.now = std::max(modem.now, modem.NextEvent());
        const std::string piece = modem.Transmit(modem.now);
        if (piece.empty()) continue;
        all += piece;
        times.push_back(modem.now);
    }
    EXPECT_EQ(all, whole);
    ASSERT_EQ(times.size(), 30U);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GT(times[i] - times[i - 1], 50 * kMillisecond);
    }
}

TEST(Pieces, AListingComesMessageByMessage) {
    BenchModem modem("881");
    modem.Ask("AT+CMGF=1");
    modem.Tell("pieces on");
    modem.Tell("sms +1555 one");
    modem.Tell("sms +1555 two");
    modem.Receive("AT+CMGL=\"ALL\"\r", modem.now);
    EXPECT_THAT(modem.Wait(51 * kMillisecond),
                AllOf(HasSubstr("\r\none\r\n"), Not(HasSubstr("two"))));
    EXPECT_THAT(modem.Wait(kSecond), AllOf(StartsWith("+CMGL: 2,"), EndsWith("two\r\n\r\nOK\r\n")));
    EXPECT_EQ(modem.Ask("AT+CMGL=\"REC UNREAD\""), "\r\nOK\r\n") << "an empty one is one piece";
}

TEST(Unasked, LinesComeAnywhereAndBetweenEchoAndAnswer) {
    BenchModem modem("881", true);
    EXPECT_EQ(modem.Wait(3600 * kSecond), "");
    ASSERT_EQ(modem.Tell("unasked 10s"), "ok");
    const std::string hour = modem.Wait(3600 * kSecond);
    for (const char* line :
         {"RDY\r\n", "RING\r\n", "^BOOT:", "^RSSI: 17\r\n", "+CREG: 1,\"1A2B\"", "SMS DONE\r\n",
          "PB DONE\r\n", "^SRVST: 2", "^MODE:", "#QSS: 1", "$QCSIMSTAT: 1", "+CPIN: READY"}) {
        EXPECT_THAT(hour, HasSubstr(line));
    }
    EXPECT_THAT(hour, testing::ContainsRegex("\r\n[A-Z^#$+][^\r]*\r\n[A-Z^#$+]")) << "one without";
    modem.Tell("unasked 1d");
    int interrupted = 0;
    for (int i = 0; i < 200; ++i) {
        if (modem.Ask("AT+CSQ") != "AT+CSQ\r" + Answered("+CSQ: 17,99")) ++interrupted;
    }
    EXPECT_GT(interrupted, 5);
    EXPECT_LT(interrupted, 60);
    modem.Tell("unasked off");
    EXPECT_EQ(modem.NextEvent(), sim::kNever);
}

TEST(Restart, IsDeafThenRefusesThenWaitsForTheSim) {
    BenchModem modem("881");
    modem.Tell("clock 2026-03-14T09:15:02");
    ASSERT_EQ(modem.Tell("restart 30s"), "ok");
    EXPECT_EQ(modem.Ask("AT", 9 * kSecond), "");
    EXPECT_EQ(modem.Wait(kSecond), "\r\nRDY\r\n");
    modem.SetEcho(false);
    EXPECT_EQ(modem.Ask("AT", kSecond), "\r\nOK\r\n");
    std::set<std::string> refusals;
    for (int i = 0; i < 20; ++i) refusals.insert(modem.Ask("AT+CSQ", kSecond / 10));
    EXPECT_THAT(refusals,
                testing::UnorderedElementsAre("\r\n+CME ERROR: 14\r\n", "\r\n+CME ERROR: 515\r\n"));
    EXPECT_THAT(modem.Wait(7 * kSecond), HasSubstr("+CPIN: READY"));
    EXPECT_EQ(modem.Ask("AT+CNUM", kSecond), "\r\n+CME ERROR: 14\r\n");
    EXPECT_EQ(modem.Ask("AT+CSQ", kSecond), Answered("+CSQ: 17,99"));
    EXPECT_THAT(modem.Ask("AT+CCLK?", kSecond), HasSubstr("\"80/01/06,00:00:"));
    EXPECT_EQ(modem.Ask("AT+CREG?", kSecond), Answered("+CREG: 0,2"));
    EXPECT_THAT(modem.Wait(10 * kSecond), HasSubstr("SMS DONE\r\n\r\nPB DONE\r\n"));
    EXPECT_THAT(modem.Ask("AT+CNUM"), HasSubstr("2015550188"));
    EXPECT_THAT(modem.Ask("AT+CCLK?"), HasSubstr("\"26/03/14,09:15:"));
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 0,1"));
}

struct FormCase {
    const char* profile;
    const char* form;
    const char* command;
    std::string answer;
};

void PrintTo(const FormCase& form, std::ostream* out) {
    *out << form.form;
}

class Form : public testing::TestWithParam<FormCase> {};

TEST_P(Form, IsWhatTheFieldHasSeen) {
    const FormCase& form = GetParam();
    BenchModem modem(form.profile);
    modem.Ask("AT+CREG=2");
    const std::string usual = modem.Ask(form.command);
    ASSERT_EQ(modem.Tell(std::string("form ") + form.form), "ok");
    EXPECT_EQ(modem.Ask(form.command), form.answer);
    const std::string what = std::string(form.form).substr(0, std::string(form.form).find(' '));
    modem.Tell("form " + what + " usual");
    EXPECT_EQ(modem.Ask(form.command), usual);
}

INSTANTIATE_TEST_SUITE_P(
    All, Form,
    testing::Values(
        FormCase{"881", "creg short", "AT+CREG?", Answered("+CREG: 1")},
        FormCase{"881", "creg unquoted", "AT+CREG?", Answered("+CREG: 2,1,1A2B,01C3D400")},
        FormCase{"881", "creg blanks", "AT+CREG?",
                 Answered("+CREG: 2, 1, \"1A2B\", \"01C3D400\" ")},
        FormCase{"881", "cnum no-name", "AT+CNUM", Answered("+CNUM: ,\"2015550188\",129")},
        FormCase{"881", "cnum plus", "AT+CNUM", Answered("+CNUM: \"\",\"+12015550188\",145")},
        FormCase{"mc75i", "cind last", "AT+CIND?", Answered("+CIND: 5,99,1,0,0,0,0,0,2")},
        FormCase{"mc75i", "delete index-only", "AT+CMGD=0,1", "\r\n+CMS ERROR: 500\r\n"},
        FormCase{"E362", "simstat tight", "AT$QCSIMSTAT?",
                 Answered("$QCSIMSTAT: 0,SIM INIT COMPLETED")},
        FormCase{"E362", "qmi names", "AT$NWQMISTATUS",
                 Answered("$NWQMISTATUS: QMI_RESULT_SUCCESS:QMI_ERR_NONE\r\n"
                          "\tQMI State: DISCONNECTED\r\n\tCall Duration: 0 seconds")}));

TEST(Forms, OfTheStatusPage) {
    BenchModem modem("881");
    modem.Tell("form page carrier");
    EXPECT_THAT(modem.Ask("AT!GSTATUS?"), AllOf(HasSubstr("RX level Carrier 0 (dBm): -79\t"),
                                                Not(HasSubstr("Serving Cell"))));
    modem.Tell("service lte");
    EXPECT_THAT(modem.Ask("AT!GSTATUS?"), HasSubstr("RSSI (dBm):    -79\t\tTx Power:    0\r\n"));
    modem.Tell("form page low-power");
    EXPECT_THAT(modem.Ask("AT!GSTATUS?"), HasSubstr("Mode:        LOW POWER MODE\r\n\r\nOK\r\n"));
    modem.Tell("form page padded");
    EXPECT_THAT(modem.Ask("AT!GSTATUS?"),
                AllOf(StartsWith("\r\n!GSTATUS:  \r\n"), EndsWith(")  \r\n\r\n\r\n\r\nOK\r\n")));
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 17,99")) << "no page";
}

TEST(Forms, OfTheEcho) {
    BenchModem modem("881", true);
    modem.Tell("form echo doubled");
    EXPECT_EQ(modem.Ask("AT"), "AT\r\r\n\r\nOK\r\n");
}

TEST(Forms, OfAListing) {
    BenchModem modem("881");
    modem.Tell("clock 2026-03-14T09:15:00");
    modem.Ask("AT+CMGF=1", 0);
    modem.Tell("sms 150 Hi");
    modem.Ask("AT+CMGL=\"ALL\"");
    const auto listing = [&modem](const std::string& form) {
        EXPECT_EQ(modem.Tell("form listing " + form), "ok");
        return modem.Ask("AT+CMGL=\"ALL\"");
    };
    const std::string head = "+CMGL: 1,\"REC READ\",\"150\",";
    const std::string stamp = "\"26/03/14,09:15:00+00\"";
    EXPECT_EQ(listing("usual"), Answered(head + "," + stamp + "\r\nHi"));
    EXPECT_EQ(listing("no-name"), Answered(head + stamp + "\r\nHi"));
    EXPECT_EQ(listing("comma"), Answered(head + "\"Doe, John\"," + stamp + "\r\nHi"));
    EXPECT_EQ(listing("seventh"), Answered(head + "," + stamp + ",145\r\nHi"));
    EXPECT_EQ(listing("ucs2"),
              Answered("+CMGL: 1,\"REC READ\",\"003100350030\",," + stamp + "\r\n00480069"));
    EXPECT_EQ(listing("header"),
              Answered(head + "," + stamp + "\r\nHi\r\n+CMGL: 9,\"REC UNREAD\",\"+15550\""));
    EXPECT_EQ(listing("tight-end"), "\r\n" + head + "," + stamp + "\r\nHi\r\nOK\r\n");
}

TEST(SerialLine, BringsAnAnswerByteByByte) {
    BenchModem modem("mc75i");
    ASSERT_EQ(modem.Tell("line 115200"), "ok");
    modem.Receive("AT+CSQ\r", modem.now);
    const std::string answer = Answered("+CSQ: 17,99");
    EXPECT_EQ(modem.Wait(5 * kMillisecond), "");
    EXPECT_EQ(modem.Wait(10 * 87), answer.substr(0, 10));
    EXPECT_EQ(modem.Wait(kSecond), answer.substr(10));
    EXPECT_TRUE(modem.LosesWhatNobodyReads());
    modem.Tell("line usual");
    EXPECT_FALSE(modem.LosesWhatNobodyReads());
    EXPECT_EQ(TimeToAnswer(&modem, "AT+CSQ"), 5 * kMillisecond);
}

TEST(Moods, RefuseWhatTheyDoNotKnow) {
    BenchModem modem("881");
    for (const char* line :
         {"pace", "pace fast", "pieces 3", "unasked often", "restart soon", "line fast", "line -1",
          "plug x", "plug 256", "form", "form creg", "form creg round", "form hair red"}) {
        EXPECT_THAT(modem.Tell(line), StartsWith("error: ")) << line;
    }
    EXPECT_EQ(TimeToAnswer(&modem, "AT+CSQ"), 5 * kMillisecond);
}

}  // namespace

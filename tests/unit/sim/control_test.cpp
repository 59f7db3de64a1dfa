#include "sim/control/played_modem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bench_modem.h"

namespace {

using sim::kSecond;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Control, RefusesWhatItDoesNotUnderstand) {
    BenchModem modem("E362");
    for (const char* line : {"",
                             "dance",
                             "signal",
                             "signal 32",
                             "signal x",
                             "signal 10 8",
                             "signal 1 2 3",
                             "register somewhere",
                             "cell 1",
                             "cell XYZ 1",
                             "cell 10000 1",
                             "sim lost",
                             "call maybe",
                             "drop-call now",
                             "connect-fails",
                             "connect-fails many",
                             "connect-fails 14 3 often",
                             "call-lasts long",
                             "unknown perhaps",
                             "no-address 1",
                             "sms +1555",
                             "sms-fails x",
                             "sms-fails 38 3 later",
                             "store -1",
                             "store 10001",
                             "clock noon",
                             "clock +long",
                             "silence",
                             "silence forever",
                             "garbage -1",
                             "garbage 1048577",
                             "say \"half",
                             "answer AT",
                             "answer AT OK soon",
                             "drive",
                             "drive fast",
                             "echo",
                             "echo loud",
                             "set csq 4"}) {
        EXPECT_THAT(modem.Tell(line), StartsWith("error: ")) << line;
    }
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 20,99")) << "nothing may have changed";
    EXPECT_THAT(modem.Unexpected(), testing::IsEmpty());
}

TEST(Control, ASignalShowsTheSameEverywhere) {
    BenchModem e362("E362");
    EXPECT_EQ(e362.Tell("signal 10 3"), "ok");
    EXPECT_EQ(e362.Ask("AT+CSQ"), Answered("+CSQ: 10,3"));
    EXPECT_THAT(e362.Ask("AT$NWRSSI=15"), HasSubstr("RSSI=-93\r\n"));
    EXPECT_THAT(e362.Ask("AT+CIND?"), HasSubstr("+CIND: 5,2,"));
    BenchModem e371("E371");
    e371.Tell("signal 10");
    EXPECT_THAT(e371.Ask("AT$NWRSSI=15"), HasSubstr("RSSI=93\r\n"));
    BenchModem sierra("881");
    sierra.Tell("signal 10");
    EXPECT_THAT(sierra.Ask("AT!GSTATUS?"), HasSubstr("RX level (dBm):-93\r\n"));
    sierra.Tell("signal 99");
    EXPECT_EQ(sierra.Ask("AT+CSQ"), Answered("+CSQ: 99,99"));
}

struct IndicatorCase {
    int csq;
    int indicator;
};

class Indicator : public testing::TestWithParam<IndicatorCase> {};

TEST_P(Indicator, FollowsTheSignal) {
    BenchModem modem("generic");
    modem.Tell("signal " + std::to_string(GetParam().csq));
    EXPECT_EQ(modem.Ask("AT+CIND?"),
              Answered(sim::Print("+CIND: 5,%d,1,0,0,0,0,0", GetParam().indicator)));
}

INSTANTIATE_TEST_SUITE_P(Levels, Indicator,
                         testing::Values(IndicatorCase{0, 0}, IndicatorCase{1, 1},
                                         IndicatorCase{9, 1}, IndicatorCase{10, 2},
                                         IndicatorCase{17, 2}, IndicatorCase{18, 3},
                                         IndicatorCase{25, 3}, IndicatorCase{26, 4},
                                         IndicatorCase{29, 4}, IndicatorCase{30, 5},
                                         IndicatorCase{31, 5}, IndicatorCase{99, 0}));

TEST(Control, RegistrationMovesServiceAndOperatorWithIt) {
    BenchModem modem("881");
    modem.Tell("register roaming");
    EXPECT_THAT(modem.Ask("AT!GSMINFO?"), HasSubstr("PLMN: 001 020\r\n"));
    EXPECT_THAT(modem.Ask("AT^SYSINFO"), HasSubstr("^SYSINFO:2,3,1,5,1\r\n"));
    modem.Tell("deregister");
    EXPECT_THAT(modem.Ask("AT^SYSINFO"), HasSubstr("^SYSINFO:0,0,0,0,1\r\n"));
    EXPECT_THAT(modem.Ask("AT*CNTI=0"), HasSubstr("*CNTI: 0,No Service\r\n"));
    modem.Tell("register home");
    EXPECT_THAT(modem.Ask("AT*CNTI=0"), HasSubstr("*CNTI: 0,HSDPA/HSUPA\r\n"));
    modem.Tell("register denied");
    EXPECT_THAT(modem.Ask("AT^SYSINFO"), HasSubstr("^SYSINFO:1,0,0,5,1\r\n"));
    modem.Tell("sim absent");
    EXPECT_THAT(modem.Ask("AT^SYSINFO"), HasSubstr("^SYSINFO:0,0,0,0,255\r\n"));
}

TEST(Control, ServiceTakesNamesAndAnyText) {
    BenchModem modem("E362");
    modem.Tell("service No Service");
    EXPECT_EQ(modem.Ask("AT$NWSYSMODE"), Answered("No Service"));
    EXPECT_EQ(modem.Ask("AT+CEREG?"), Answered("+CEREG: 0,2"));
    modem.Tell("service EVDO rev A");
    EXPECT_EQ(modem.Ask("AT$NWSYSMODE"), Answered("EVDO rev A"));
    modem.Tell("service lte");
    EXPECT_EQ(modem.Ask("AT$NWSYSMODE"), Answered("LTE"));
    EXPECT_EQ(modem.Ask("AT+CEREG?"), Answered("+CEREG: 0,1"));
}

TEST(Control, TheCallCanBeMovedByHand) {
    BenchModem modem("E362");
    modem.Tell("call up");
    EXPECT_THAT(modem.Tell("status"), HasSubstr("\ncall: CONNECTED "));
    modem.Tell("drop-call 7");
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS"), HasSubstr("Call End Reason: 7\r\n"));
    modem.Tell("call up");
    modem.Tell("call drop");
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS"), HasSubstr("Call End Reason: 5\r\n"));
    modem.Tell("call-lasts 30s");
    modem.Tell("call up");
    modem.Wait(31 * kSecond);
    EXPECT_THAT(modem.Tell("status"), HasSubstr("\ncall: DISCONNECTED 00:00:30"));
    modem.Tell("unknown on");
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS"), HasSubstr("QMI State: unknown\r\n"));
}

TEST(Control, ConnectFailsForeverUntilOff) {
    BenchModem modem("E362");
    modem.Tell("connect-fails 14 3 forever");
    for (int i = 0; i < 5; ++i) modem.Ask("AT$NWQMICONNECT=,,", 5 * kSecond);
    EXPECT_THAT(modem.Tell("status"), HasSubstr("\ncall: DISCONNECTED "));
    modem.Tell("connect-fails off");
    modem.Ask("AT$NWQMICONNECT=,,", 5 * kSecond);
    EXPECT_THAT(modem.Tell("status"), HasSubstr("\ncall: CONNECTED "));
}

TEST(Control, TheClockIsSetAndShifted) {
    BenchModem modem("E362");
    EXPECT_EQ(modem.Tell("clock 2026-03-14T09:15:02"), "ok");
    EXPECT_EQ(modem.Ask("AT$NWLTIME", kSecond), Answered("2026.03.14.09.15.02"));
    EXPECT_EQ(modem.Tell("clock +3600s"), "ok");
    EXPECT_EQ(modem.Ask("AT$NWLTIME"), Answered("2026.03.14.10.15.03"));
    EXPECT_EQ(modem.Tell("clock -1d"), "ok");
    EXPECT_EQ(modem.Ask("AT$NWLTIME"), Answered("2026.03.13.10.15.05"));
}

TEST(Control, AnswersArePlainTextOrBytes) {
    BenchModem modem("generic");
    modem.Tell("answer AT+CSQ \"+CSQ: 1,2\"");
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 1,2"));
    modem.Tell("answer AT+CSQ ERROR");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "\r\nERROR\r\n");
    modem.Tell("answer AT+CSQ \"cut\\r\" 1s");
    EXPECT_EQ(modem.Ask("AT+CSQ", kSecond / 2), "");
    EXPECT_EQ(modem.Wait(kSecond), "cut\r");
    modem.Tell("answer AT+CSQ \"\"");
    EXPECT_EQ(modem.Ask("AT+CSQ"), "");
    modem.Tell("forget AT+CSQ");
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 17,99"));
}

TEST(Control, TellsWhatWasHeardAndSent) {
    BenchModem modem("881");
    EXPECT_EQ(modem.Tell("heard"), "ok");
    EXPECT_EQ(modem.Tell("sent"), "ok");
    modem.Ask("AT+CMGF=1");
    modem.Ask("AT+CMGS=\"2015550100\"");
    modem.Ask("Hello there\x1a");
    EXPECT_EQ(modem.Tell("sent"), "ok: 2015550100 Hello there");
    EXPECT_EQ(modem.Tell("heard"),
              "ok:        0.000 AT+CMGF=1\n       2.000 AT+CMGS=\"2015550100\"");
}

TEST(Control, HelpNamesEveryWordOfTheLanguage) {
    BenchModem modem("generic");
    const std::string help = modem.Tell("help");
    for (const char* word :
         {"signal", "register",  "deregister",    "cell",       "sim",     "service",
          "call",   "drop-call", "connect-fails", "call-lasts", "unknown", "no-address",
          "sms",    "sms-fails", "store",         "clock",      "silence", "garbage",
          "unplug", "plug",      "say",           "answer",     "forget",  "drive",
          "echo",   "set",       "status",        "heard",      "sent",    "help",
          "pace",   "pieces",    "unasked",       "restart",    "form",    "line"}) {
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + word + " "));
    }
}

TEST(Control, SpeaksUpAboutTheSignalWhenTold) {
    BenchModem modem("generic");
    modem.Tell("set speak-up on");
    modem.Tell("signal 4");
    EXPECT_EQ(modem.Wait(kSecond), "\r\n^RSSI: 4\r\n");
    modem.Tell("signal 4");
    EXPECT_EQ(modem.Wait(kSecond), "");
}

}  // namespace

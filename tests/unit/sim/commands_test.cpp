#include "sim/modem/commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bench_modem.h"

namespace {

using sim::kSecond;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(ParseCommand, TakesTheFourFormsApart) {
    using Form = sim::Command::Form;
    EXPECT_EQ(sim::ParseCommand("AT+CSQ").form, Form::kExecute);
    EXPECT_EQ(sim::ParseCommand("AT+CREG?").form, Form::kRead);
    EXPECT_EQ(sim::ParseCommand("AT+CREG=?").form, Form::kTest);
    const sim::Command set = sim::ParseCommand("AT+CGDCONT=3,\"ipv4v6\",\"a=b?\"");
    EXPECT_EQ(set.form, Form::kSet);
    EXPECT_EQ(set.head, "+CGDCONT");
    EXPECT_EQ(set.Number(0, 0), 3);
    EXPECT_EQ(set.Text(2), "a=b?");
    EXPECT_EQ(set.Text(3), "");
}

TEST(Registration, ReportsItsModeStateAndCell) {
    BenchModem modem("881");
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 0,1"));
    modem.Ask("AT+CREG=2");
    modem.Tell("cell 00AF 123ABC");
    modem.Wait(kSecond);
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 2,1,\"00AF\",\"00123ABC\""));
    modem.Tell("register denied");
    modem.Wait(kSecond);
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 2,3"));
    EXPECT_EQ(modem.Ask("AT+CREG=3"), "\r\nERROR\r\n");
}

TEST(Registration, SpeaksUpAsItsModeSays) {
    BenchModem modem("E362");
    modem.Tell("register roaming");
    EXPECT_EQ(modem.Wait(kSecond), "") << "mode 0 says nothing";
    modem.Ask("AT+CREG=1");
    modem.Ask("AT+CEREG=2");
    modem.Tell("register home");
    EXPECT_EQ(modem.Wait(kSecond), "\r\n+CREG: 1\r\n\r\n+CEREG: 1,\"1A2B\",\"01C3D400\"\r\n");
    modem.Tell("cell 1A2B 77");
    EXPECT_EQ(modem.Wait(kSecond), "\r\n+CEREG: 1,\"1A2B\",\"00000077\"\r\n");
    modem.Tell("signal 3");
    EXPECT_EQ(modem.Wait(kSecond), "");
}

TEST(Registration, OnlyLteModemsKnowCereg) {
    EXPECT_EQ(BenchModem("E371").Ask("AT+CEREG?"), Answered("+CEREG: 0,1"));
    EXPECT_EQ(BenchModem("881").Ask("AT+CEREG?"), "\r\nERROR\r\n");
}

TEST(Contexts, AreWrittenReadAndDeleted) {
    BenchModem modem("generic");
    EXPECT_EQ(modem.Ask("AT+CGDCONT?"),
              Answered("+CGDCONT: 1,\"IP\",\"internet\",\"0.0.0.0\",0,0"));
    EXPECT_EQ(modem.Ask("AT+CGDCONT=3,\"ipv4v6\",\"My.Apn\""), "\r\nOK\r\n");
    EXPECT_THAT(modem.Ask("AT+CGDCONT?"), HasSubstr("+CGDCONT: 3,\"IPV4V6\",\"My.Apn\","));
    EXPECT_EQ(modem.Ask("AT+CGDCONT=1"), "\r\nOK\r\n");
    EXPECT_THAT(modem.Ask("AT+CGDCONT?"), Not(HasSubstr("+CGDCONT: 1,")));
    modem.Ask("AT+CMEE=1");
    EXPECT_EQ(modem.Ask("AT+CGDCONT=0,\"IP\",\"x\""), "\r\n+CME ERROR: 50\r\n");
    EXPECT_EQ(modem.Ask("AT+CGDCONT=1,\"X25\",\"x\""), "\r\n+CME ERROR: 50\r\n");
}

TEST(Contexts, TheProfileApnIsTheSameContext) {
    BenchModem modem("E362");
    EXPECT_EQ(modem.Ask("AT+NWAPNE=3,\"fleet\",True,1439,V4,0.0.0.0,0.0.0.0,0:0:0:0:0:0:0:0,"
                        "0:0:0:0:0:0:0:0,HRPD_EHRPD"),
              "\r\nOK\r\n");
    EXPECT_THAT(modem.Ask("AT+CGDCONT?"), HasSubstr("+CGDCONT: 3,\"IPV4V6\",\"fleet\","));
    EXPECT_THAT(modem.Ask("AT+NWAPNE?"), HasSubstr("+NWAPNE: 3,\"fleet\""));
}

TEST(DataCallCommands, ConnectAndDisconnectTakeTheirTime) {
    BenchModem modem("E362");
    std::vector<bool> links;
    modem.on_call = [&links](bool up) { links.push_back(up); };
    EXPECT_EQ(modem.Ask("AT$NWQMICONNECT=,,", kSecond), "\r\nOK\r\n");
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS", kSecond), HasSubstr("QMI State: CONNECTING\r\n"));
    EXPECT_THAT(modem.Ask("AT$NWQMISTATUS", kSecond), HasSubstr("QMI State: CONNECTED\r\n"));
    EXPECT_THAT(links, testing::ElementsAre(true));
    EXPECT_EQ(modem.Ask("AT$NWQMIDISCONNECT", kSecond), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT$NWQMISTATUS"),
              Answered("$NWQMISTATUS: Success: 0\r\nQMI State: DISCONNECTED\r\n"
                       "Call End Reason: 2\r\nCall Duration: 00:00:01"));
    EXPECT_THAT(links, testing::ElementsAre(true, false));
}

TEST(DataCallCommands, AFailureTellsItsResultAndReason) {
    BenchModem modem("E371");
    modem.Tell("connect-fails 28 10");
    modem.Ask("AT$NWQMICONNECT=,,", 3 * kSecond);
    EXPECT_EQ(modem.Ask("AT$NWQMISTATUS"),
              Answered("$NWQMISTATUS: Failure: 28\r\nQMI State: DISCONNECTED\r\n"
                       "Call End Reason: 10\r\nCall Duration: 00:00:00"));
}

TEST(OperatorNames, AreAsManyAsTheSettingSays) {
    BenchModem modem("881");
    modem.Tell("set operators 3000");
    const std::string list = modem.Ask("AT+COPN");
    EXPECT_THAT(list, StartsWith("\r\n+COPN: \"001010\",\"Example Net\"\r\n"));
    std::size_t lines = 0;
    for (std::size_t at = list.find("+COPN:"); at != list.npos; at = list.find("+COPN:", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(lines, 3000u);
}

TEST(Pin, IsAskedForByALockedSim) {
    BenchModem modem("generic");
    modem.Ask("AT+CMEE=1");
    EXPECT_EQ(modem.Ask("AT+CPIN?"), Answered("+CPIN: READY"));
    modem.Tell("sim locked");
    EXPECT_EQ(modem.Ask("AT+CPIN?"), Answered("+CPIN: SIM PIN"));
    EXPECT_EQ(modem.Ask("AT+CREG?"), Answered("+CREG: 0,0"));
    modem.Tell("sim absent");
    EXPECT_EQ(modem.Ask("AT+CPIN?"), "\r\n+CME ERROR: 10\r\n");
}

TEST(Functionality, RadioOffIsNoService) {
    BenchModem modem("E362");
    EXPECT_EQ(modem.Ask("AT+CFUN=4"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT$NWSYSMODE"), Answered("No Service"));
    EXPECT_EQ(modem.Ask("AT+CFUN=1"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT$NWSYSMODE"), Answered("LTE"));
    EXPECT_EQ(modem.Ask("AT+CFUN=7"), "\r\nERROR\r\n");
}

}  // namespace

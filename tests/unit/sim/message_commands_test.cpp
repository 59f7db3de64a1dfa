// The message commands, over the whole dialogue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bench_modem.h"

namespace {

using sim::kMillisecond;
using sim::kSecond;
using testing::HasSubstr;

class Messages : public testing::Test {
  protected:
    Messages() { modem.Ask("AT+CMGF=1"); }
    BenchModem modem{"881"};
};

TEST_F(Messages, AnUnreadListingMarksThemRead) {
    modem.SetClock(1773479702, modem.now);
    modem.Tell("sms +15551234567 \"Hello\\nWorld\"");
    modem.Tell("sms +15551234567 second");
    EXPECT_EQ(modem.Ask("AT+CMGL=\"REC UNREAD\""),
              "\r\n+CMGL: 1,\"REC UNREAD\",\"+15551234567\",,\"26/03/14,09:15:02+00\"\r\n"
              "Hello\nWorld\r\n"
              "+CMGL: 2,\"REC UNREAD\",\"+15551234567\",,\"26/03/14,09:15:02+00\"\r\n"
              "second\r\n\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGL=\"REC UNREAD\""), "\r\nOK\r\n");
    EXPECT_THAT(modem.Ask("AT+CMGL=\"ALL\""), HasSubstr("+CMGL: 2,\"REC READ\""));
    EXPECT_EQ(modem.Ask("AT+CMGD=0,1"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGL=\"ALL\""), "\r\nOK\r\n");
}

TEST_F(Messages, OneIsReadByItsIndex) {
    modem.Tell("clock 2026-03-14T09:15:02");
    modem.Tell("sms +15551234567 Hello");
    EXPECT_EQ(
        modem.Ask("AT+CMGR=1"),
        Answered("+CMGR: \"REC UNREAD\",\"+15551234567\",,\"26/03/14,09:15:02+00\"\r\nHello"));
    EXPECT_THAT(modem.Ask("AT+CMGR=1"), HasSubstr("+CMGR: \"REC READ\""));
    EXPECT_EQ(modem.Ask("AT+CMGR=2"), "\r\n+CMS ERROR: 321\r\n");
}

TEST_F(Messages, AreSentAfterThePrompt) {
    EXPECT_EQ(modem.Ask("AT+CMGS=\"+12015550100\""), "\r\n> ");
    EXPECT_EQ(modem.Ask("Hello\x1a"), Answered("+CMGS: 1"));
    ASSERT_EQ(modem.SentMessages().size(), 1u);
    EXPECT_EQ(modem.SentMessages()[0].to, "+12015550100");
    EXPECT_EQ(modem.SentMessages()[0].text, "Hello");
    modem.Ask("AT+CMGS=\"2015550100\"");
    EXPECT_EQ(modem.Ask("again\x1a"), Answered("+CMGS: 2"));
}

TEST_F(Messages, ABodyThatComesBeforeASlowPromptIsTakenAllTheSame) {
    modem.Tell("set prompt-delay 2s");
    modem.Receive("AT+CMGS=\"2015550100\"\r\n", modem.now);
    EXPECT_EQ(modem.Wait(100 * kMillisecond), "");
    modem.Receive("early\x1a\r\n", modem.now);
    EXPECT_EQ(modem.Wait(5 * kSecond), "\r\n> " + Answered("+CMGS: 1"));
    EXPECT_EQ(modem.SentMessages().at(0).text, "early");
}

TEST_F(Messages, EscapeSendsNothing) {
    modem.Ask("AT+CMGS=\"2015550100\"");
    EXPECT_EQ(modem.Ask("no\x1b"), "\r\nOK\r\n");
    EXPECT_TRUE(modem.SentMessages().empty());
    EXPECT_EQ(modem.Ask("AT"), "\r\nOK\r\n");
}

TEST_F(Messages, FailAtThePromptAsOftenAsTold) {
    modem.Tell("sms-fails 500 2 prompt");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n+CMS ERROR: 500\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n+CMS ERROR: 500\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n> ");
}

TEST_F(Messages, FailBehindTheBody) {
    modem.Tell("sms-fails 38 forever");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n> ");
        EXPECT_EQ(modem.Ask("x\x1a"), "\r\n+CMS ERROR: 38\r\n");
    }
    modem.Tell("sms-fails off");
    modem.Ask("AT+CMGS=\"2015550100\"");
    EXPECT_EQ(modem.Ask("x\x1a"), Answered("+CMGS: 1"));
}

TEST_F(Messages, NeedANetworkASimAndANumber) {
    modem.Tell("deregister");
    modem.Ask("AT+CMGS=\"2015550100\"");
    EXPECT_EQ(modem.Ask("x\x1a"), "\r\n+CMS ERROR: 331\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"bob\""), "\r\n+CMS ERROR: 305\r\n");
    modem.Tell("sim absent");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"2015550100\""), "\r\n+CMS ERROR: 310\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGL=\"ALL\""), "\r\n+CMS ERROR: 310\r\n");
    modem.Tell("sim locked");
    EXPECT_EQ(modem.Ask("AT+CMGD=1"), "\r\n+CMS ERROR: 311\r\n");
}

TEST_F(Messages, TextModeCanBeMissing) {
    modem.Tell("set text-mode off");
    EXPECT_EQ(modem.Ask("AT+CMGF=1"), "\r\nERROR\r\n");
}

TEST_F(Messages, InPduModeAreListedAndReadAsOctets) {
    modem.Tell("clock 2026-03-14T09:15:02");
    modem.Tell("sms +12015550199 hellohello");
    modem.Ask("AT+CMGF=0");
    const std::string pdu =
        "07912110550501F0"
        "040B912110550591F9"
        "0000"
        "62304190512000"
        "0AE8329BFD4697D9EC37";
    EXPECT_EQ(modem.Ask("AT+CMGR=1"), Answered("+CMGR: 0,,28\r\n" + pdu));
    EXPECT_EQ(modem.Ask("AT+CMGL=1"), Answered("+CMGL: 1,1,,28\r\n" + pdu));
    EXPECT_EQ(modem.Ask("AT+CMGL=4"), Answered("+CMGL: 1,1,,28\r\n" + pdu));
    EXPECT_EQ(modem.Ask("AT+CMGL"), "\r\nOK\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGL=5"), "\r\n+CMS ERROR: 305\r\n");
}

TEST_F(Messages, InPduModeAreSentByTheirLength) {
    modem.Ask("AT+CMGF=0");
    EXPECT_EQ(modem.Ask("AT+CMGS=22"), "\r\n> ");
    EXPECT_EQ(modem.Ask("0011000A81021055102000"
                        "00A70AE8329BFD4697D9EC37\x1a"),
              Answered("+CMGS: 1"));
    ASSERT_EQ(modem.SentMessages().size(), 1u);
    EXPECT_EQ(modem.SentMessages()[0].to, "2001550102");
    EXPECT_EQ(modem.SentMessages()[0].text, "hellohello");
    modem.Ask("AT+CMGS=21");
    EXPECT_EQ(modem.Ask("0011000A8102105510200000A70AE8329BFD4697D9EC37\x1a"),
              "\r\n+CMS ERROR: 304\r\n");
    EXPECT_EQ(modem.Ask("AT+CMGS=\"+12015550100\""), "\r\n+CMS ERROR: 304\r\n");
}

TEST_F(Messages, HaveOneMemory) {
    EXPECT_EQ(modem.Ask("AT+CPMS=\"SM\",\"SM\""), Answered("+CPMS: 0,20,0,20,0,20"));
    EXPECT_EQ(modem.Ask("AT+CPMS=\"ME\""), "\r\n+CMS ERROR: 302\r\n");
    EXPECT_EQ(modem.Ask("AT+CPMS=?"), Answered("+CPMS: (\"SM\"),(\"SM\"),(\"SM\")"));
}

TEST_F(Messages, AFullStoreTellsSo) {
    modem.Tell("store 1");
    modem.Tell("sms +15551234 only");
    EXPECT_EQ(modem.Ask("AT+CPMS?"), Answered("+CPMS: \"SM\",1,1,\"SM\",1,1,\"SM\",1,1"));
    EXPECT_EQ(modem.Ask("AT+CIND?"), Answered("+CIND: 5,2,1,1,0,0,0,1"));
}

TEST_F(Messages, AThousandFitInOneListing) {
    modem.Tell("store 1000");
    for (int i = 0; i < 1000; ++i) modem.Tell("sms +15551234 body" + std::to_string(i));
    const std::string list = modem.Ask("AT+CMGL=\"REC UNREAD\"");
    EXPECT_THAT(list, HasSubstr("\r\nbody0\r\n"));
    EXPECT_THAT(list, HasSubstr("\r\nbody999\r\n\r\nOK\r\n"));
}

TEST_F(Messages, ReferencesCountThroughOneOctet) {
    for (int i = 1; i < 256; ++i) {
        modem.Ask("AT+CMGS=\"2015550100\"");
        modem.Ask("x\x1a");
    }
    modem.Ask("AT+CMGS=\"2015550100\"");
    EXPECT_EQ(modem.Ask("x\x1a"), Answered("+CMGS: 0"));
}

}  // namespace

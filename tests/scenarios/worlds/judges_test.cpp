// The judges of the worlds judged: what they must let pass, and what they must not.
#include <gmock/gmock.h>

#include "scenarios/worlds/daemon_words.h"
#include "scenarios/worlds/status_files.h"

using namespace worlds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::string Canned(const std::string& command) {
    return command + std::string(80 - command.size(), '\0');
}

Given Router(CardType card) {
    Given given;
    given.card = card;
    given.apns = {"internet"};
    given.numbers = {"+1555"};
    given.messages = {"Hello"};
    given.names = {"plain", "it's", std::string(255, 'n')};
    return given;
}

constexpr char kStatistics[] = "/var/log/wireless.cardstats";

std::string UsualStatistics() {
    return "#File generated 2026-03-14 09:15:02 \n#Device Properties :\n"
           "CELLMODEM_ESN=001\nCELLMODEM_IMEI=001\nCELLMODEM_SIM_ID=Unknown\n"
           "CELLMODEM_MDN=2015550123\nCELLMODEM_MANU=Example Modems\nCELLMODEM_MODEL=Generic\n"
           "CELLMODEM_FIRMWARE_V=1 0\r\nCELLMODEM_HARDWARE_V=\n#Network Service Info :\n"
           "CELLMODEM_CARRIER=Example Net\nCELLMODEM_CARRIER_PLMN=\nCELLMODEM_BAND=\n"
           "CELLMODEM_CURRENT_RSSI=-77\nCELLMODEM_HIGHSPEED_RSSI=-125\n"
           "CELLMODEM_LOWSPEED_RSSI=0\nCELLMODEM_CURRENT_CSQ=17\nCELLMODEM_HIGHSPEED_CSQ=99\n"
           "CELLMODEM_LOWSPEED_CSQ=17\nCELLMODEM_CURRENT_ECIO=-6.5\n"
           "CELLMODEM_SIM_CONT_APN0=1:internet\nCELLMODEM_SIM_CONT_APN2=3:\n";
}

std::string FaultWith(const std::string& what, const std::string& instead) {
    std::string text = UsualStatistics();
    text.replace(text.find(what), what.size(), instead);
    return FaultOfStatusFile(kCardGeneric, kStatistics, text);
}

}  // namespace

TEST(JudgeOfWrites, KnowsTheCommandsOfEachCard) {
    EXPECT_TRUE(IsKnownWrite(Router(kCardSierra881), "at!gstatus?"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardNovatelE362), "at!gstatus?"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardSierra881), "at!gstatus? "));
    EXPECT_TRUE(IsKnownWrite(Router(kCardGeneric), "\r"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardGeneric), "\r\n"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardGeneric), ""));
}

TEST(JudgeOfWrites, WantsAllZerosOfACannedCommand) {
    Given router = Router(kCardNovatelE371);
    EXPECT_TRUE(IsKnownWrite(router, Canned("AT+CSQ?")));
    EXPECT_TRUE(IsKnownWrite(router, Canned("AT$NWQMIDISCONNECT")));
    EXPECT_FALSE(IsKnownWrite(router, "AT+CSQ?"));
    std::string dirty = Canned("AT");
    dirty[40] = 'x';
    EXPECT_FALSE(IsKnownWrite(router, dirty));
    EXPECT_FALSE(IsKnownWrite(router, Canned("AT+CIND?")));
    router.polls_indicators = true;
    EXPECT_TRUE(IsKnownWrite(router, Canned("AT+CIND?")));
    EXPECT_FALSE(IsKnownWrite(router, Canned("AT+CSQ")));
    EXPECT_FALSE(IsKnownWrite(Router(kCardSierra881), Canned("AT$NWQMIDISCONNECT")));
}

TEST(JudgeOfWrites, KnowsWhatWasGiven) {
    EXPECT_TRUE(IsKnownWrite(Router(kCardNovatelE362), "AT+CGDCONT=3,\"ipv4v6\",\"internet\""));
    EXPECT_FALSE(IsKnownWrite(Router(kCardNovatelE362), "AT+CGDCONT=3,\"ipv4v6\",\"other\""));
    EXPECT_FALSE(IsKnownWrite(Router(kCardSierra881), "AT+CGDCONT=3,\"ipv4v6\",\"internet\""));
    EXPECT_TRUE(IsKnownWrite(Router(kCardSierra881), "AT+CMGS=\"+1555\""));
    EXPECT_FALSE(IsKnownWrite(Router(kCardSierra881), "AT+CMGS=\"+1556\""));
    EXPECT_TRUE(IsKnownWrite(Router(kCardSierra881), "Hello\x1a"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardSierra881), "Hello"));
    EXPECT_FALSE(IsKnownWrite(Router(kCardMc75i), "Hello\x1a"));
}

TEST(JudgeOfShellLines, ReadsQuotedWords) {
    EXPECT_THAT(PlainShellWords("mv -f /a 'b c'"), ElementsAre("mv", "-f", "/a", "b c"));
    EXPECT_THAT(PlainShellWords("'it'\\''s'"), ElementsAre("it's"));
    for (const char* line : {"a;b", "a$b", "a`b`", "a&b", "a>b", "'a", "a\nb", "a\\b", "a*"}) {
        EXPECT_THAT(PlainShellWords(line), IsEmpty()) << line;
    }
}

TEST(JudgeOfShellLines, KnowsEachFormExactly) {
    const std::string stamp = ".20260314-091502";
    const auto knows = [](CardType card, const std::string& line) {
        return IsKnownShellLine(Router(card), line);
    };
    const std::string move = "mv -f /tmp/sms/send/plain /tmp/sms/send_fail/plain";
    EXPECT_TRUE(knows(kCardSierra881, move + stamp));
    EXPECT_FALSE(knows(kCardSierra881, move));
    EXPECT_FALSE(knows(kCardNovatelE362, move + stamp));
    EXPECT_TRUE(knows(kCardSierra881,
                      "mv -f '/tmp/sms/send/it'\\''s' '/tmp/sms/send_fail/it'\\''s" + stamp + "'"));
    EXPECT_FALSE(
        knows(kCardSierra881, "mv -f /tmp/sms/send/it\\'s /tmp/sms/send_fail/other" + stamp));
    EXPECT_TRUE(knows(kCardSierra881, "mv -f /tmp/sms/send/" + std::string(255, 'n') +
                                          " /tmp/sms/send_fail/" + std::string(239, 'n') + stamp));
    EXPECT_TRUE(knows(kCardNovatelE362,
                      "/bin/date   -s \"9:15:2 3/14/2026\" &> /dev/null; /bin/hwclock --systohc "
                      "&> /dev/null"));
    EXPECT_FALSE(knows(kCardNovatelE362,
                       "/bin/date   -s \"9:15:2 3/14/2026;reboot\" &> /dev/null; /bin/hwclock "
                       "--systohc &> /dev/null"));
    EXPECT_FALSE(knows(kCardSierra881, "ping -c 1 -I wwan0 8.8.8.8 &> /dev/null"));
    EXPECT_TRUE(knows(kCardNovatelE371, "ping -c 1 -I wwan0 8.8.8.8 &> /dev/null"));
}

TEST(JudgeOfPaths, KnowsTheDaemonsFiles) {
    EXPECT_TRUE(IsKnownPath("/var/log/lightbar"));
    EXPECT_TRUE(IsKnownPath("/tmp/sms/recv/sms_msg20260314-091502.1"));
    for (const char* path : {"/var/log/lightbar2", "/etc/passwd", "/tmp/sms/recv/../x",
                             "/tmp/sms/recv/a/b", "/tmp/x", "/tmp/sms/send"}) {
        EXPECT_FALSE(IsKnownPath(path)) << path;
    }
}

TEST(JudgeOfStatusFiles, LetsAGoodFilePass) {
    EXPECT_EQ(FaultOfStatusFile(kCardGeneric, kStatistics, UsualStatistics()), "");
    EXPECT_EQ(FaultOfStatusFile(kCardGeneric, kStatistics, ""), "");
    EXPECT_EQ(FaultOfStatusFile(kCardSierra881, "/var/log/lightbar", "+CSQ: 17,99\n"), "");
    EXPECT_EQ(FaultOfStatusFile(kCardSierra881, "/var/log/wirelessactivation_status", "Reg Home\n"),
              "");
}

TEST(JudgeOfStatusFiles, FindsEachFault) {
    EXPECT_THAT(FaultWith("#File generated 2026", "#File generated 26"), HasSubstr("line 1 "));
    EXPECT_THAT(FaultWith("ESN=001", "ESN=00x"), HasSubstr("line 3 is not clean"));
    EXPECT_THAT(FaultWith("SIM_ID=Unknown", "SIM_ID=a b"), HasSubstr("line 5 is not clean"));
    EXPECT_THAT(FaultWith("_MDN=", "_MDM="), HasSubstr("line 6 is not that of"));
    EXPECT_THAT(FaultWith("CELLMODEM_MDN=2015550123\n", ""), HasSubstr("line 6 is not that of"));
    EXPECT_THAT(FaultWith("_MODEL=Generic", "_MODEL=a\nCELLMODEM_X=1"), HasSubstr("line 9 "));
    EXPECT_THAT(FaultWith("RSSI=-77", "RSSI=77"), HasSubstr("not clean"));
    EXPECT_THAT(FaultWith("HIGHSPEED_CSQ=99", "HIGHSPEED_CSQ=32"), HasSubstr("not clean"));
    EXPECT_THAT(FaultWith("=3:\n", "=3:"), HasSubstr("not complete"));
    EXPECT_THAT(FaultWith("APN2=3", "APN0=3"), HasSubstr("not a context"));
    EXPECT_THAT(FaultWith("APN2=3:\n", "APN2=3:\nX=1\n"), HasSubstr("not the end"));
    EXPECT_THAT(FaultWith("=001", std::string("=0\0001", 4)), HasSubstr("zero byte"));
}

TEST(JudgeOfStatusFiles, FindsAFaultInASingleLine) {
    const auto fault = [](const char* path, const char* text) {
        return FaultOfStatusFile(kCardSierra881, path, text);
    };
    EXPECT_THAT(fault("/var/log/lightbar", "+CSQ: 1\n+CSQ: 2\n"), HasSubstr("not one line"));
    EXPECT_THAT(fault("/var/log/lightbar", "+CSQ: 1"), HasSubstr("not one line"));
    EXPECT_THAT(fault("/var/log/lightbar", "CSQ: 1\n"), HasSubstr("not clean"));
    EXPECT_THAT(fault("/var/log/wireless.mdn", "12a\n"), HasSubstr("not clean"));
    EXPECT_THAT(fault("/var/log/wirelessactivation_status", "Reg\n"), HasSubstr("not clean"));
    EXPECT_THAT(fault("/var/log/other", "x\n"), HasSubstr("no status file"));
}

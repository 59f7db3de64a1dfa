// What of a dialogue is somebody's, and what becomes of it.
#include "capture/places.h"

#include "field_log.h"
#include "support/text.h"

namespace capture {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

bool HasRightCheckDigit(const std::string& digits) {
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        int value = digits[digits.size() - 1 - i] - '0';
        if (i % 2 == 1) value = value > 4 ? 2 * value - 9 : 2 * value;
        sum += value;
    }
    return sum % 10 == 0;
}

// The line that stands for this one.
std::string Placed(const std::string& command, const std::string& line) {
    const Story story = StoryOf(command, "\r\n" + line + "\r\n\r\nOK\r\n");
    if (story.exchanges.empty()) return "(refused)";
    const std::string text = story.exchanges[0].Text();
    EXPECT_EQ(text.size(), line.size() + 10);
    return text.substr(2, line.size());
}

TEST(Places, IdentitiesBecomeOthersOfTheirShape) {
    struct Row {
        const char* command;
        const char* line;
        const char* secret;
        const char* becomes;
    };
    const Row rows[] = {
        {"at+gsn", "001017088100014", "001017088100014", "[0-9]{15}"},
        {"AT!ICCID?", "!ICCID: 8900101000000000019", "0101000000000019", "!ICCID: 89[0-9]{17}"},
        {"AT+ICCID?", "$NWICCID: 8900101000000000019", "0101000000000019",
         "\\$NWICCID: 89[0-9]{17}"},
        {"AT^SCID", "^SCID: 8900101000000000019", "0101000000000019", "\\^SCID: 89[0-9]{17}"},
        {"AT+CIMI", "001010123456789", "123456789", "00101[0-9]{10}"},
        {"AT$NWMDN", "2015550136", "2015550136", "[1-9][0-9]{9}"},
        {"at+cnum", "+CNUM: \"Ada\",\"+12015550136\",129", "2015550136",
         "\\+CNUM: \"[A-Z][a-z]{2}\",\"\\+[1-9][0-9]{10}\",129"},
        {"at+cnum", "+CNUM: ,\"2015550136\",129", "2015550136", "\\+CNUM: ,\"[0-9]{10}\",129"},
        {"AT+CREG?", "+CREG: 2,1,\"1A2B\",\"01C3D401\"", "C3D401",
         "\\+CREG: 2,1,\"1[0-9A-F]{3}\",\"01[0-9A-F]{6}\""},
        {"AT", "+CREG: 1,\"1A2B\",\"01C3D401\"", "C3D401",
         "\\+CREG: 1,\"1[0-9A-F]{3}\",\"01[0-9A-F]{6}\""},
        {"AT+CEREG?", "+CEREG: 2,1,1a2b,1c3d401,7", "c3d401",
         "\\+CEREG: 2,1,1[0-9a-f]{3},1[0-9a-f]{6},7"},
        {"at!gstatus?", "RSRP (dBm):    -95\t\tTAC:         1A2B (6699)", "6699",
         "RSRP \\(dBm\\):    -95\t\tTAC:         1[0-9A-F]{3} \\([0-9]{4}\\)"},
        {"at!gstatus?", "Serving Cell:  01C3D401 (29611009)", "29611009",
         "Serving Cell:  01[0-9A-F]{6} \\([0-9]{8}\\)"},
        {"at!GSMINFO?", "Cell ID: 0x01C3D401 (29611009)", "29611009",
         "Cell ID: 0x01[0-9A-F]{6} \\([0-9]{8}\\)"},
        {"AT+CGDCONT?", "+CGDCONT: 1,\"IP\",\"m2m.example.org\",\"10.11.12.13\",0,0", "example",
         "\\+CGDCONT: "
         "1,\"IP\",\"[a-z][0-9][a-z]\\.[a-z]{7}\\.[a-z]{3}\",\"10\\.[0-9]{2}\\.[0-9]{2}\\."
         "[0-9]{2}\",0,0"},
        {"AT+CGDCONT?", "+CGDCONT: 1,\"IP\",\"a\",\"93.184.216.34\",0,0", "93.184.216.34",
         "\\+CGDCONT: 1,\"IP\",\".\",\"[0-9]{2}\\.[0-9]{3}\\.[0-9]{3}\\.[0-9]{2}\",0,0"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        const std::string placed = Placed(row.command, row.line);
        EXPECT_THAT(placed, MatchesRegex(row.becomes));
        EXPECT_THAT(placed, Not(HasSubstr(row.secret)));
    }
}

TEST(Places, CheckDigitsStayRight) {
    const std::string imei = Placed("at+gsn", "490154203237518");
    EXPECT_TRUE(HasRightCheckDigit(imei)) << imei;
    const std::string sim = Placed("AT!ICCID?", "!ICCID: 8900101000000000019").substr(8);
    EXPECT_EQ(HasRightCheckDigit(sim), HasRightCheckDigit("8900101000000000019")) << sim;
}

TEST(Places, WhatIsNobodysStays) {
    struct Row {
        const char* command;
        const char* line;
    };
    const Row rows[] = {
        {"AT+CSQ", "+CSQ: 17,99"},
        {"AT+CREG?", "+CREG: 2,0"},
        {"AT+CREG?", "+CREG: 2,2,\"0000\",\"FFFFFFFF\""},
        {"AT^SYSINFO", "^SYSINFO:2,3,0,5,1"},
        {"AT*CNTI=0", "*CNTI: 0,HSDPA/HSUPA"},
        {"at+gmi", "Sierra Wireless"},
        {"at!gver?", "!GVER: K2_0_1_2 TEST 2026/03/02"},
        {"AT!PRIID?", "PRI Part Number:    9900123"},
        {"AT+COPN", "+COPN: \"001010\",\"Example Net\""},
        {"at!GSMINFO?", "PLMN: 001 010"},
        {"AT+CGDCONT?", "+CGDCONT: 1,\"IP\",\"\",\"0.0.0.0\",0,0"},
        {"AT$NWQMISTATUS", "Call Duration: 00:10:31"},
        {"AT$QCSIMSTAT?", "$QCSIMSTAT: 0, SIM INIT COMPLETED"},
        {"AT+CCLK?", "+CCLK: \"26/03/14,09:15:02+00\""},
        {"AT$NWLTIME", "2026.03.14.9.15.2"},
        {"AT+CMGF=1", "+CMS ERROR: 38"},
        {"at!gstatus?", "Current Time:  1234567\t\tTemperature: 38"},
        {"at!gstatus?", "GMM (PS) state:REGISTERED\tNORMAL SERVICE"},
    };
    for (const Row& row : rows) EXPECT_EQ(Placed(row.command, row.line), row.line);
}

TEST(Places, TheSameBecomesTheSameEverywhere) {
    const std::string cell = Placed("at!GSMINFO?", "Cell ID: 0x01C3D401 (29611009)");
    unsigned hex = 0;
    unsigned decimal = 1;
    ASSERT_EQ(std::sscanf(cell.c_str(), "Cell ID: 0x%x (%u)", &hex, &decimal), 2);
    EXPECT_EQ(hex, decimal);

    const Result result =
        ConvertLog(Asked("AT+CGDCONT=3,\"ipv4v6\",\"m2m.example\"", "\r\nOK\r\n") +
                   Asked("AT+CGDCONT?", "+CGDCONT: 3,\"IPV4V6\",\"m2m.example\"\r\n") + kHead +
                   "Sending command: AT\n");
    const Story story = ReadStory(result.text);
    const std::string apn = story.exchanges[0].command.substr(23, 11);
    EXPECT_EQ(story.exchanges[1].Text(), "+CGDCONT: 3,\"IPV4V6\",\"" + apn + "\"\r\n");
}

TEST(Places, MessagesLoseTheirWordsAndKeepTheirForm) {
    const Story story =
        StoryOf("AT+CMGL=\"REC UNREAD\"",
                "\r\n+CMGL: 1,\"REC UNREAD\",\"+15551234567\",\"Bob\",\"26/03/14,09:15:02+00\""
                "\r\nMeet me: OK\r\nat 5\r\n\r\nOK\r\n");
    ASSERT_FALSE(story.exchanges.empty());
    EXPECT_THAT(story.exchanges[0].Text(),
                MatchesRegex("\r\n\\+CMGL: 1,\"REC UNREAD\",\"\\+[0-9]{11}\",\"[A-Z][a-z]{2}\","
                             "\"26/03/14,09:15:02\\+00\"\r\n[A-Z][a-z]{3} [a-z]{2}: [A-Z]{2}\r\n"
                             "[a-z]{2} [0-9]\r\n\r\nOK\r\n"));
    EXPECT_THAT(story.exchanges[0].Text(), Not(HasSubstr("Meet")));
}

TEST(Places, AMessageThatIsSentIsPlacedInCommandAndEcho) {
    const Result result =
        ConvertLog(Asked("AT+CMGS=\"+15551234567\"", "\r\n> ") +
                   Asked("Bob waits#012#012#032", "Bob waits\r\n\r\n+CMGS: 12\r\n\r\nOK\r\n") +
                   kHead + "Sending command: AT\n");
    ASSERT_THAT(result.text, Not(IsEmpty())) << testing::PrintToString(result.complaints);
    const Story story = ReadStory(result.text);
    EXPECT_THAT(story.exchanges[0].command, MatchesRegex("AT\\+CMGS=\"\\+[0-9]{11}\""));
    EXPECT_THAT(story.exchanges[1].command, MatchesRegex("[A-Z][a-z]{2} [a-z]{5}\n\n\x1a"));
    const std::string text = story.exchanges[1].command.substr(0, 9);
    EXPECT_EQ(story.exchanges[1].Text(), text + "\r\n\r\n+CMGS: 12\r\n\r\nOK\r\n");
    EXPECT_THAT(result.text, Not(HasSubstr("waits")));
}

// Of a message that comes unasked only the one line is a text; the answer goes on behind it.
TEST(Places, AnUnaskedMessageIsOneLine) {
    const Story story =
        StoryOf("AT+CSQ",
                "\r\n+CMT: \"+15551234567\",,\"26/03/14,09:15:02+00\"\r\nMeet Bob\r\n"
                "\r\n+CSQ: 17,99\r\n\r\nOK\r\n");
    ASSERT_FALSE(story.exchanges.empty());
    EXPECT_THAT(story.exchanges[0].Text(),
                AllOf(HasSubstr("\r\n+CSQ: 17,99\r\n"), Not(HasSubstr("Bob"))));
}

// An answer that comes too late stands in the next command's.
TEST(Places, AnIdentityInAnotherAnswerIsNotTakenForHarmless) {
    EXPECT_EQ(Placed("AT$NWLTIME", "2015550136"), "(refused)");
    EXPECT_EQ(Placed("AT$NWNN", "2015550136"), "(refused)");
    EXPECT_EQ(Placed("at!gstatus?", "001017088100014"), "(refused)");
}

// The daemon doubles the last character of a file; no file could give a text that ends otherwise.
TEST(Places, ADoubledLastCharacterStaysDoubled) {
    const Story story = StoryOf("Helloo#032", "\r\nOK\r\n");
    ASSERT_FALSE(story.exchanges.empty());
    const std::string& text = story.exchanges[0].command;
    ASSERT_EQ(text.size(), 7U);
    EXPECT_EQ(text[4], text[5]);
    EXPECT_NE(text, "Helloo\x1a");
}

// After a refused number comes no text.
TEST(Places, ARefusedMessageHasNoText) {
    const Result result =
        ConvertLog(Asked("AT+CMGS=\"1555\"", "\r\nERROR\r\n") + Asked("AT+CMGD=0,2", "\r\nOK\r\n") +
                   kHead + "Sending command: AT\n");
    EXPECT_THAT(result.text, HasSubstr("> AT+CMGD=0,2\n"));
}

TEST(Places, WhatCannotBePlacedIsRefusedWithItsPlace) {
    const std::string log = Asked("AT", "OK") + Asked("AT!GETRAT?", "\r\nCARD BRAVO7 12\r\n") +
                            kHead + "Sending command: AT\n";
    const Result result = ConvertLog(log);
    EXPECT_THAT(result.text, IsEmpty());
    // The dump of the fifth line begins behind its head and label.
    const std::size_t dump = sizeof(kHead) - 1 + sizeof("Raw Response: ");
    EXPECT_THAT(
        result.complaints,
        ElementsAre(
            AllOf(HasSubstr(Format("messages:5:%zu: ", dump + 2 * 3)), HasSubstr("'CARD'")),
            AllOf(HasSubstr(Format("messages:5:%zu: ", dump + 7 * 3)), HasSubstr("'BRAVO7'"))));
    EXPECT_THAT(ConvertLog(log, {"CARD", "BRAVO7"}).text, HasSubstr("CARD BRAVO7 12"));
}

TEST(Places, NothingLikeAnIdentityPassesInAnUnknownLine) {
    for (const char* const line :
         {"MYNUM: 2015550136", "APN internet", "10.11.12.13 is host", "id=1C3D401", "12345",
          "+XREG: 1,\"1A2B\",\"01C3D401\"", "user@example.org", "+CNUM: 2015550136"}) {
        EXPECT_EQ(Placed("AT!GETRAT?", line), "(refused)") << line;
    }
    EXPECT_EQ(Placed("AT!GETRAT?", "12,34 a:b 9999"), "12,34 a:b 9999");
}

TEST(Places, AnIdentityInAHarmlessFormIsRefused) {
    for (const char* const line :
         {"Model: 490154203237518", "!GVER: 2015550136", "QMI State: 123456",
          "QMI State: 10.11.12.13", "Call Duration: 201-555-0136"}) {
        EXPECT_EQ(Placed("at!gver?", line), "(refused)") << line;
    }
}

TEST(Places, AForeignCommandIsRefused) {
    const Result result =
        ConvertLog(Asked("AT+DIAL=\"Bobby\"", "OK") + kHead + "Sending command: AT\n");
    EXPECT_THAT(result.text, IsEmpty());
    EXPECT_THAT(result.complaints[0], HasSubstr("messages:1:"));
}

// However the bytes were cut on their way.
TEST(Places, AnIdentityInTwoPiecesIsOne) {
    const Result result =
        ConvertLog(std::string(kHead) + "Sending command: at+gsn\n" + kHead + Dump("\r\n0010170") +
                   "\n" + kHead + "read 9 bytes from port\n" + kHead + Dump("88100014\r\n") + "\n" +
                   kHead + "read 10 bytes from port\n" + kHead + "Sending command: AT\n");
    ASSERT_THAT(result.text, Not(IsEmpty()));
    const Story story = ReadStory(result.text);
    EXPECT_EQ(story.exchanges[0].answer.size(), 2U);
    EXPECT_EQ(story.exchanges[0].answer[0].bytes.size(), 9U);
    EXPECT_THAT(story.exchanges[0].Text(),
                AllOf(MatchesRegex("\r\n[0-9]{15}\r\n"), Not(HasSubstr("0010170"))));
}

}  // namespace
}  // namespace capture

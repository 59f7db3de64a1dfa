#include "status/identity.h"

#include <gmock/gmock.h>

#include "status_test.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

// Every card type, and the identity pass as each of them hears it when nothing is known yet.
struct CardPass {
    int card;
    Lines commands;
};

const CardPass kPasses[] = {
    {kCardGeneric, {"at+gsn", "AT+CGDCONT?"}},
    {kCardSierra881,
     {"at+cnum", "at+gsn", "AT!PRIID?", "AT+CGDCONT?", "at+gmi", "at+gmm", "at!gver?", "at^hver",
      "at!GSMINFO?"}},
    {kCardType3, {"at+gsn", "AT+CGDCONT?"}},
    {kCardSierraUsb305,
     {"at+cnum", "at+gsn", "AT!PRIID?", "AT+CGDCONT?", "at+gmi", "at+gmm", "at!gver?"}},
    {kCardMc75i, {"at+cnum", "at+gsn", "AT+CGDCONT?"}},
    {kCardNovatelE362,
     {"AT$NWNN", "AT$NWMDN", "at+gsn", "AT+CGDCONT?", "at+gmi", "at+gmm", "ATI3"}},
    {kCardNovatelE371, {"at+cnum", "at+gsn", "AT+CGDCONT?", "at+gmi", "at+gmm", "ATI3"}},
};

}  // namespace

class IdentityPass : public StatusTest {};

TEST_F(IdentityPass, AsksEachCardInItsFixedOrder) {
    for (const CardPass& row : kPasses) {
        SCOPED_TRACE(row.card);
        g_i_CardType = row.card;
        world.heard.clear();
        UpdateCardIdentity();
        EXPECT_EQ(row.commands, world.Commands());
    }
}

// What is known stays: only the number, the network and the contexts are asked for again.
TEST_F(IdentityPass, AsksOnlyOnceForWhatDoesNotChange) {
    const CardPass rows[] = {
        {kCardGeneric, {"AT+CGDCONT?"}},
        {kCardSierra881, {"at+cnum", "AT+CGDCONT?", "at!GSMINFO?"}},
        {kCardSierraUsb305, {"at+cnum", "AT+CGDCONT?"}},
        {kCardMc75i, {"at+cnum", "AT+CGDCONT?"}},
        {kCardNovatelE362, {"AT$NWNN", "AT$NWMDN", "AT+CGDCONT?"}},
        {kCardNovatelE371, {"at+cnum", "AT+CGDCONT?"}},
    };
    stats.serial_number = stats.sku_priid = stats.manufacturer = stats.model = "known";
    stats.firmware_version = stats.hardware_version = "known";
    for (const CardPass& row : rows) {
        SCOPED_TRACE(row.card);
        g_i_CardType = row.card;
        world.heard.clear();
        UpdateCardIdentity();
        EXPECT_EQ(row.commands, world.Commands());
    }
}

TEST_F(IdentityPass, AsksAgainWhileAFieldIsEmptyOrUnknown) {
    for (const char* unknown : {"", "Unknown"}) {
        stats.serial_number = unknown;
        world.heard.clear();
        UpdateCardIdentity();
        EXPECT_THAT(world.Commands(), Contains("at+gsn")) << unknown;
    }
}

TEST_F(IdentityPass, WaitsNoExtraSecond) {
    UpdateCardIdentity();
    EXPECT_EQ(2 * 70000, world.slept_us);
}

// --- Network name and directory number -----------------------------------------------------------

class IdentityOf : public StatusTest {
  protected:
    void Ask(int card, const std::string& command, const Lines& lines) {
        g_i_CardType = card;
        world.answers[command] = Answered(lines);
        UpdateCardIdentity();
    }
    // The same, with the raw bytes of the answer, at debug level 2, from the query's token count
    // on.
    Lines Trace(int card, const std::string& command, const std::string& answer) {
        g_i_CardType = card;
        world.answers[command] = answer;
        const Lines log = LogAtLevel(2, UpdateCardIdentity);
        auto first = std::find(log.begin(), log.end(), "Sending command: " + command);
        while (first != log.end() && first->find("token count is") == std::string::npos) ++first;
        const auto last = std::find_if(first, log.end(), [](const std::string& line) {
            return line.compare(0, 15, "Sending command") == 0;
        });
        return Lines(first, last);
    }
};

TEST_F(IdentityOf, TheE362NetworkIsTheFirstLineThatIsNoEcho) {
    const std::pair<Lines, const char*> rows[] = {
        {{"Example Net"}, "Example Net"},
        {{"AT$NWNN", "  Example Net\t", "Other"}, "Example Net"},
        {{"abc"}, "abc"},  // four characters with its carriage return
        {{"ab"}, "Old"},
        {{"AT$NWNN"}, "Old"},
        {{"ERROR"}, "ERROR"},
    };
    for (const auto& [lines, carrier] : rows) {
        stats.carrier = "Old";
        Ask(kCardNovatelE362, "AT$NWNN", lines);
        EXPECT_EQ(carrier, stats.carrier) << lines[0];
    }
}

TEST_F(IdentityOf, TheE362NumberIsTheFirstLongLineOfDigits) {
    const std::pair<Lines, const char*> rows[] = {
        {{"AT$NWMDN", "5551234567"}, "5551234567"},
        {{" 555 1234 ", "5551234567"}, "5551234"},
        {{"12345678"}, "12345678"},  // nine characters with its carriage return
        {{"1234567"}, "Unknown"},
        {{"-12345678"}, "-12345678"},
        {{"+15551234567"}, "Unknown"},
        {{"         "}, ""},
    };
    for (const auto& [lines, mdn] : rows) {
        stats.mdn = "old";
        Ask(kCardNovatelE362, "AT$NWMDN", lines);
        EXPECT_EQ(mdn, stats.mdn) << lines[0];
    }
}

TEST_F(IdentityOf, TheNumberIsTheSecondFieldOfTheSubscriberLine) {
    const std::pair<Lines, const char*> rows[] = {
        {{R"(+CNUM: "","5551234567",129)"}, "5551234567"},
        {{R"(+CNUM: "Line 1","+15551234567",145)"}, "Unknown"},
        {{R"(+CNUM: "Line 1","",145)"}, ""},
        {{R"(+CNUM: "a")"}, "Unknown"},
        {{R"(+CNUM: "a","555")"}, "Unknown"},
        {{R"(+CNUM: "a","+1",1)", R"(+CNUM: "b","2",1)"}, "Unknown"},
        {{"at+cnum", R"(x +CNUM: ,7,)"}, "7"},
        {{R"(+CNUM: "a", 555,1)"}, "Unknown"},
        {{"ERROR"}, "Unknown"},
    };
    for (const int card : {kCardSierra881, kCardSierraUsb305, kCardMc75i, kCardNovatelE371}) {
        for (const auto& [lines, mdn] : rows) {
            stats.mdn = "old";
            Ask(card, "at+cnum", lines);
            EXPECT_EQ(mdn, stats.mdn) << card << ' ' << lines[0];
        }
    }
}

TEST_F(IdentityOf, TheNumberIsTraced) {
    EXPECT_THAT(
        Trace(kCardMc75i, "at+cnum", "+CNUM: \"a\",\"+1\",145\r\n"),
        ElementsAre("DEBUG: token count is : 2", "DEBUG: checking line : +CNUM: \"a\",\"+1\",145\r",
                    "DEBUG: Found +CNUM: line", "DEBUG: Found first COMMA at pos 11",
                    "DEBUG: Found 2nd COMMA at pos 15", "DEBUG: Returned non numeric MDN '+1'"));
    EXPECT_EQ(kAtNonZero,
              LevelsThatLog("DEBUG: Returned non numeric MDN '+1'", UpdateCardIdentity));
    for (const char* line : {"DEBUG: Found +CNUM: line", "DEBUG: Found first COMMA at pos 11",
                             "DEBUG: Found 2nd COMMA at pos 15"}) {
        EXPECT_EQ(kAbove1, LevelsThatLog(line, UpdateCardIdentity)) << line;
    }
}

// --- Serial number and PRI -----------------------------------------------------------------------

TEST_F(IdentityOf, TheSerialNumberIsTheFirstLongLineOfDigits) {
    world.answers["at+gsn"] = "\r\n 0123456789012 \r\nOK\r\n";
    UpdateCardIdentity();
    EXPECT_EQ("0123456789012", stats.serial_number);
}

TEST_F(IdentityOf, AShortLineIsNoSerialNumber) {
    const std::pair<const char*, const char*> rows[] = {
        {"\r\n123456789\r\nOK\r\n", "Unknown"},      // ten characters with the carriage return
        {"\r\n1234567890\r\nOK\r\n", "1234567890"},  // eleven
        {"\r\n1234567890\nOK\r\n", "Unknown"},       // ten
        {"\r\n490154203237518 x\r\n", "Unknown"},   {"", "Unknown"},
    };
    for (const auto& [answer, serial_number] : rows) {
        stats.serial_number = "Unknown";
        world.answers["at+gsn"] = answer;
        UpdateCardIdentity();
        EXPECT_EQ(serial_number, stats.serial_number) << answer;
    }
}

TEST_F(IdentityOf, EachLongLineIsTracedAsASerialNumber) {
    EXPECT_THAT(Trace(kCardGeneric, "at+gsn", "0123456789x\r\n01234567890\r\n"),
                ElementsAre("DEBUG: token count is : 3", "DEBUG: checking line : 0123456789x\r",
                            "DEBUG: line looks like an IMEI, cleaning white space",
                            "DEBUG: line after cleaning (length 11): 0123456789x",
                            "DEBUG: checking line : 01234567890\r",
                            "DEBUG: line looks like an IMEI, cleaning white space",
                            "DEBUG: line after cleaning (length 11): 01234567890",
                            "DEBUG: line is a number"));
    EXPECT_THAT(Trace(kCardNovatelE362, "AT$NWMDN", "5551234567\r\n"),
                ElementsAre("DEBUG: token count is : 2", "DEBUG: checking line : 5551234567\r",
                            "DEBUG: line looks like an MDN, cleaning white space",
                            "DEBUG: line after cleaning (length 10): 5551234567",
                            "DEBUG: line is a number"));
    EXPECT_EQ(kAbove1, LevelsThatLog("DEBUG: line is a number", UpdateCardIdentity));
}

TEST_F(IdentityOf, ThePriIsThePartNumberAndTheRevision) {
    const std::pair<Lines, const char*> rows[] = {
        {{"PRI Part Number: 9900123 ", "Revision:  01.02"}, "9900123 01.02"},
        {{"Revision: 01.02", "PRI Part Number: 9900123"}, "9900123 01.02"},
        {{"PRI Part Number: 1", "PRI Part Number: 2", "Revision: a", "Revision: b"}, "2 a b"},
        {{"PRI Part Number: 9900123"}, "9900123"},
        {{"Revision: 01.02"}, "Unknown 01.02"},
        {{"PRI Part Number: 1 Revision: 2"}, "1 Revision: 2 2"},
        {{"ERROR"}, "Unknown"},
    };
    for (const int card : {kCardSierra881, kCardSierraUsb305}) {
        for (const auto& [lines, priid] : rows) {
            stats.sku_priid = "Unknown";
            Ask(card, "AT!PRIID?", lines);
            EXPECT_EQ(priid, stats.sku_priid) << lines[0];
        }
    }
}

TEST_F(IdentityOf, ThePriIsTracedInBothPasses) {
    EXPECT_THAT(
        Trace(kCardSierraUsb305, "AT!PRIID?", "PRI Part Number: 9\nRevision: 1"),
        ElementsAre("DEBUG: token count is : 2", "DEBUG: checking line : PRI Part Number: 9",
                    "DEBUG: line looks like 'PRI Part Number:', cleaning white space",
                    "DEBUG: checking line : Revision: 1",
                    "DEBUG: checking line : PRI Part Number: 9",
                    "DEBUG: checking line : Revision: 1",
                    "DEBUG: line looks like 'Revision:', cleaning white space"));
}

// Maker, model, versions, band, ICCID and contexts.
#include <gmock/gmock.h>

#include "status/identity.h"
#include "status_test.h"

using testing::ElementsAre;

class ProductOf : public StatusTest {
  protected:
    void Ask(int card, const std::string& command, const Lines& lines) {
        g_i_CardType = card;
        world.answers[command] = Answered(lines);
        UpdateCardIdentity();
    }
    Lines LogOf(const std::string& text, void (*query)()) {
        world.log.clear();
        g_i_DebugLevel = 2;
        query();
        g_i_DebugLevel = 0;
        return LogLinesWith(text);
    }
};

TEST_F(ProductOf, TheMakerIsTheFirstLineThatIsNoEcho) {
    const std::pair<Lines, const char*> rows[] = {
        {{"at+gmi", "Example Maker"}, "Example Maker"},
        {{" Example\rMaker "}, " ExampleMaker "},  // line ends only, blanks stay
        {{"Maker"}, "Maker"},                      // six characters with its carriage return
        {{"Make"}, "Unknown"},
        {{"xx at+gmi"}, "Unknown"},
        {{"ERROR"}, "ERROR"},
    };
    for (const int card : {kCardSierra881, kCardSierraUsb305, kCardNovatelE362, kCardNovatelE371}) {
        for (const auto& [lines, maker] : rows) {
            stats.manufacturer = "Unknown";
            Ask(card, "at+gmi", lines);
            EXPECT_EQ(maker, stats.manufacturer) << card << ' ' << lines[0];
        }
    }
}

TEST_F(ProductOf, TheModelIsTheFirstLineThatIsNoEcho) {
    const std::pair<Lines, const char*> rows[] = {
        {{"at+gmm", "E362"}, "E362"}, {{"881"}, "881"}, {{"88"}, "Unknown"}, {{" a b "}, " a b "}};
    for (const auto& [lines, model] : rows) {
        stats.model = "Unknown";
        Ask(kCardNovatelE362, "at+gmm", lines);
        EXPECT_EQ(model, stats.model) << lines[0];
    }
    EXPECT_EQ(1, g_i_FirstHealthReport);
}

TEST_F(ProductOf, AnMc7700ChangesTheHealthReport) {
    Ask(kCardSierra881, "at+gmm", {"MC7700"});
    EXPECT_EQ("MC7700", stats.model);
    EXPECT_EQ(0, g_i_FirstHealthReport);
    EXPECT_EQ(1, world.CountLogged("Setting Specific model number to MC7700"));
    UpdateCardIdentity();
    EXPECT_EQ(1, world.CountLogged("Setting Specific model number to MC7700"));
}

TEST_F(ProductOf, AnMc7700IsLoggedAtEveryLevel) {
    g_i_CardType = kCardSierraUsb305;
    world.answers["at+gmm"] = Answered({"AirPrime MC7700 rev 2"});
    EXPECT_EQ(kAtEveryLevel, LevelsThatLog("Setting Specific model number to MC7700", [this] {
                  stats.model = "Unknown";
                  UpdateCardIdentity();
              }));
}

TEST_F(ProductOf, AnEchoedLineIsTracedAfterCleaning) {
    world.answers["at+gmm"] = "at+gmm\r\nE362\r\n";
    g_i_CardType = kCardNovatelE362;
    EXPECT_THAT(LogOf("after cleaning", UpdateCardIdentity),
                ElementsAre("DEBUG: line after cleaning (length 4): E362"));
    EXPECT_TRUE(world.Logged("DEBUG: checking line : at+gmm\r"));
}

// Only the start is trimmed: the line's carriage return stays in the field.
TEST_F(ProductOf, TheNovatelFirmwareKeepsItsLineEnd) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        stats.firmware_version = "Unknown";
        Ask(card, "ATI3", {"Model: x", "Revision: \t2.04 b", "Revision: 9"});
        EXPECT_EQ("2.04 b\r", stats.firmware_version);
    }
}

TEST_F(ProductOf, TheSierraFirmwareHasNoWhiteSpace) {
    for (const int card : {kCardSierra881, kCardSierraUsb305}) {
        stats.firmware_version = "Unknown";
        Ask(card, "at!gver?", {"!GVER: K2 0 7\tACAP", "!GVER: 9"});
        EXPECT_EQ("K207ACAP", stats.firmware_version);
    }
}

TEST_F(ProductOf, TheFirmwareQueriesDoNotStandInForEachOther) {
    world.answers["at!gver?"] = Answered({"!GVER: 1"});
    g_i_CardType = kCardNovatelE362;
    UpdateCardIdentity();
    EXPECT_EQ("Unknown", stats.firmware_version);
    world.answers["ATI3"] = Answered({"Revision: 2"});
    world.answers["at!gver?"] = "\r\nERROR\r\n";
    g_i_CardType = kCardSierra881;
    UpdateCardIdentity();
    EXPECT_EQ("Unknown", stats.firmware_version);
}

// The Sierra firmware query prints the band query's message.
// Guards oddity firmware-logged-as-band.
TEST_F(ProductOf, TheFirmwareIsTracedWithTheBandsLabel) {
    g_i_CardType = kCardSierra881;
    world.answers["at!gver?"] = Answered({"!GVER: 1"});
    EXPECT_THAT(LogOf("looks like", UpdateCardIdentity),
                ElementsAre("DEBUG: line looks like !GETBAND:, cleaning white space"));
    world.answers["at!getband?"] = Answered({"!GETBAND: 1"});
    EXPECT_THAT(LogOf("looks like", QueryBand),
                ElementsAre("DEBUG: line looks like !GETBAND:, cleaning white space"));
    g_i_CardType = kCardNovatelE371;
    stats.firmware_version = "Unknown";
    world.answers["ATI3"] = Answered({"Revision: 2"});
    EXPECT_THAT(LogOf("looks like", UpdateCardIdentity),
                ElementsAre("DEBUG: line looks like Revision:, cleaning white space"));
}

TEST_F(ProductOf, TheHardwareVersionStandsBetweenTheQuotes) {
    const std::pair<Lines, const char*> rows[] = {
        {{R"(^HVER:"HW 1.0")"}, "HW 1.0"}, {{R"(^HVER: "a" "b")"}, "a"},
        {{R"("x" ^HVER: "a")"}, "x"},      {{R"(^HVER:"HW 1.0)", R"(^HVER:"late")"}, "Unknown"},
        {{R"(^HVER: 1.0)"}, "Unknown"},    {{R"(^HVER:"")"}, ""},
    };
    for (const auto& [lines, version] : rows) {
        stats.hardware_version = "Unknown";
        Ask(kCardSierra881, "at^hver", lines);
        EXPECT_EQ(version, stats.hardware_version) << lines[0];
    }
}

TEST_F(ProductOf, TheHardwareVersionIsTraced) {
    g_i_CardType = kCardSierra881;
    world.answers["at^hver"] = Answered({R"(^HVER:"HW 1.0")"});
    EXPECT_THAT(LogOf("DEBUG: Found", UpdateCardIdentity),
                ElementsAre("DEBUG: Found ^HVER: line", "DEBUG: Found first Quote at pos 7",
                            "DEBUG: Found 2nd Quote at pos 13"));
}

// --- Band, ICCID, contexts -----------------------------------------------------------------------

TEST_F(ProductOf, TheBandIsAskedOfThe881Only) {
    world.answers["at!getband?"] = Answered({"!GETBAND: WCDMA 1900, GSM ", "!GETBAND: 2"});
    g_i_CardType = kCardSierra881;
    QueryBand();
    EXPECT_EQ("WCDMA1900,GSM", stats.band);
    world.answers.clear();
    QueryBand();
    EXPECT_EQ("Unknown", stats.band);

    EXPECT_THAT(CardsAsked(QueryBand), ElementsAre(kCardSierra881));
    stats.band = "kept";
    g_i_CardType = kCardNovatelE371;
    QueryBand();
    EXPECT_EQ("kept", stats.band);
}

TEST_F(ProductOf, TheIccidHasACommandForEachMaker) {
    const struct {
        int card;
        const char* command;
        const char* line;
    } rows[] = {
        {kCardSierra881, "AT!ICCID?", "!ICCID: 8901 2604"},
        {kCardMc75i, "AT^SCID", "^SCID: 8901 2604"},
        {kCardNovatelE362, "AT+ICCID?", "$NWICCID: 8901 2604"},
        {kCardNovatelE371, "AT+ICCID?", "$NWICCID:\t89012604 "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.card);
        g_i_CardType = row.card;
        stats.sim_ready = true;
        world.heard.clear();
        world.slept_us = 0;
        world.answers[row.command] = "ignored\r\n" + std::string(row.line) + "\r\n";
        QueryIccid();
        EXPECT_EQ("89012604", stats.sim_id);
        EXPECT_THAT(world.Commands(), ElementsAre(row.command));
        EXPECT_EQ(1070000 + 50000, world.slept_us);  // a second, and one read that found the answer
        world.answers.clear();
        QueryIccid();
        EXPECT_EQ("Unknown", stats.sim_id);
    }
}

TEST_F(ProductOf, TheNovatelIccidWaitsForTheSim) {
    EXPECT_THAT(CardsAsked(QueryIccid), ElementsAre(kCardSierra881, kCardMc75i));
    stats.sim_id = "kept";
    QueryIccid();
    EXPECT_EQ("kept", stats.sim_id);
    stats.sim_ready = true;
    EXPECT_THAT(CardsAsked(QueryIccid),
                ElementsAre(kCardSierra881, kCardMc75i, kCardNovatelE362, kCardNovatelE371));
}

TEST_F(ProductOf, TheContextsMirrorTheLatestAnswer) {
    world.answers["AT+CGDCONT?"] = Answered({R"(+CGDCONT: 1,"IP","internet","0.0.0.0",0,0)",
                                             R"(+CGDCONT: 2,"IP","ims","0.0.0.0",0,0)"});
    QueryPdpContexts();
    EXPECT_EQ("1:internet\n2:ims\n", stats.sim_context_apns);
    QueryPdpContexts();
    EXPECT_EQ("1:internet\n2:ims\n", stats.sim_context_apns);
    world.answers.clear();
    QueryPdpContexts();
    EXPECT_EQ("", stats.sim_context_apns);
}

TEST_F(ProductOf, AContextNeedsMoreThanThreeFields) {
    const std::pair<const char*, const char*> rows[] = {
        {R"(+CGDCONT: 1,"IP","a")", ""},
        {R"(+CGDCONT: 1,"IP","a",)", "1:a\n"},
        {R"(+CGDCONT: 1 6 , "IP" ," my apn	" ,"x")", "16:myapn\n"},
        {R"(+CGDCONT: ,,,)", ":\n"},
        {R"(x +CGDCONT:1,"IP",a"b,"x")", "1:ab\n"},
        {R"(+CGDCONT 1,"IP","a","x")", ""},
    };
    for (const auto& [line, contexts] : rows) {
        world.answers["AT+CGDCONT?"] = Answered({line});
        QueryPdpContexts();
        EXPECT_EQ(contexts, stats.sim_context_apns) << line;
    }
}

TEST_F(ProductOf, TheContextsAreTraced) {
    world.answers["AT+CGDCONT?"] = "+CGDCONT: 1,\"IP\",\"a\",\"0\"\r\n+CGDCONT: 2\r\n";
    const Lines log = LogOf("DEBUG: ", QueryPdpContexts);
    EXPECT_THAT(Lines(log.begin() + 1, log.end()),  // behind the transaction's own text
                ElementsAre("DEBUG: token count is : 3",
                            "DEBUG: checking line : +CGDCONT: 1,\"IP\",\"a\",\"0\"\r",
                            "DEBUG: line looks like +CGDCONT:", "DEBUG: got Context: 1, APN: a",
                            "DEBUG: checking line : +CGDCONT: 2\r",
                            "DEBUG: line looks like +CGDCONT:", "DEBUG: checking line : "));
    EXPECT_EQ(kAbove1, LevelsThatLog("DEBUG: got Context: 1, APN: a", QueryPdpContexts));
}

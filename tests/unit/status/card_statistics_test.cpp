#include "status/card_statistics.h"

#include <gmock/gmock.h>

#include "status_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(CsqToRssi, IsAMagnitudeInDecibelMilliwatts) {
    const struct {
        const char* csq;
        const char* previous;
        const char* rssi;
    } rows[] = {
        {"0", "", "110"},      {"1", "", "109"},   {"10", "", "100"},  {"15", "", "94"},
        {"16", "", "93"},      {"17", "", "92"},   {"31", "", "77"},   {"32", "", "75"},
        {"33", "", "33"},      {"98", "", "98"},   {"99", "", "99"},   {"99", "99", "125"},
        {"99", "98", "99"},    {"17", "99", "92"}, {"", "", "110"},    {"Unknown", "99", "110"},
        {"99x", " 99", "125"}, {"-1", "", "111"},  {"-32", "", "145"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.rssi, CsqToRssi(row.csq, row.previous)) << row.csq << '/' << row.previous;
    }
}

TEST(CsqToRssi, LeavesTheTextOfLargeValues) {
    EXPECT_EQ("33abc", CsqToRssi("33abc", ""));
    EXPECT_EQ(" 045", CsqToRssi(" 045", ""));
}

class CardStatistics : public StatusTest {
  protected:
    // The value of a key in the published file; of its first line when there are two.
    std::string Value(const std::string& key) const {
        const std::string text = "\n" + Published("wireless.cardstats");
        const auto found = text.find("\n" + key + "=");
        if (found == std::string::npos) return "(no key)";
        const auto start = found + key.size() + 2;
        return text.substr(start, text.find('\n', start) - start);
    }
    // The six signal numbers in the order of the file.
    std::string Signal() const {
        std::string numbers;
        for (const char* name : {"CURRENT_RSSI", "HIGHSPEED_RSSI", "LOWSPEED_RSSI", "CURRENT_CSQ",
                                 "HIGHSPEED_CSQ", "LOWSPEED_CSQ"}) {
            numbers += Value(std::string("CELLMODEM_") + name) + " ";
        }
        return numbers;
    }
    std::string SignalOf(const char* csq, const char* rssi, const char* rx_level) {
        stats.csq = csq;
        stats.rssi = rssi;
        stats.rx_level = rx_level;
        DumpAllCardInfo();
        return Signal();
    }
};

TEST_F(CardStatistics, TakeTheirValuesFromSignalAndLevel) {
    EXPECT_EQ("-71 -71 -92 31 31 17 ", SignalOf("17", "-92", "-71"));
    EXPECT_EQ("-80 -80 -92 27 27 17 ", SignalOf("17", "-92", "-80"));
    EXPECT_EQ("-112 -112 -60 99 99 20 ", SignalOf("20", "-60", "-112"));
    EXPECT_EQ("-111 -111 -60 1 1 20 ", SignalOf("20", "-60", "-111"));
    EXPECT_EQ("-113 -113 -60 99 99 20 ", SignalOf("20", "-60", "-113"));
    EXPECT_EQ("-200 -200 -60 99 99 20 ", SignalOf("20", "-60", "200"));
    EXPECT_EQ("-75 -75 -60 31 31 20 ", SignalOf("20", "60", "75"));
    EXPECT_EQ("-76 -76 -60 30 30 20 ", SignalOf("20", "60", "-76"));
}

TEST_F(CardStatistics, CountAnEmptyLevelAsZero) {
    EXPECT_EQ("0 0 -92 31 31 17 ", SignalOf("17", "-92", ""));
    EXPECT_EQ("0 0 -92 31 31 17 ", SignalOf("17", "-92", "-"));
}

TEST_F(CardStatistics, KeepTheDefaultsWithoutALevel) {
    EXPECT_EQ("-92 -125 -92 17 99 17 ", SignalOf("17", "-92", "Unknown"));
    EXPECT_EQ("-92 -125 -92 17 99 17 ", SignalOf("17", "92", "-71 dBm"));
    EXPECT_EQ("0 -125 0 0 99 0 ", SignalOf("Unknown", "Unknown", "Unknown"));
}

// Guards oddity publishing-fills-in.
TEST_F(CardStatistics, FillAnEmptyRssiFromTheSignal) {
    EXPECT_EQ("-92 -125 -92 17 99 17 ", SignalOf("17", "", "Unknown"));
    EXPECT_EQ("92", stats.rssi);
    stats.previous_csq = "99";
    EXPECT_EQ("-125 -125 -125 99 99 99 ", SignalOf("99", "", "Unknown"));
    EXPECT_EQ("125", stats.rssi);
    stats.previous_csq = "";
    EXPECT_EQ("-99 -125 -99 99 99 99 ", SignalOf("99", "", "Unknown"));
    EXPECT_EQ("99", stats.rssi);
}

// On LTE the level is the RSSI, and the slow value is made from the signal.
TEST_F(CardStatistics, TakeTheRssiForTheLevelOnLte) {
    for (const bool by_mode : {true, false}) {
        stats.system_mode = by_mode ? "LTE" : "x";
        stats.service_type = by_mode ? "x" : "LTE";
        EXPECT_EQ("-70 -70 -92 31 31 17 ", SignalOf("17", "-70", "-101"));
        EXPECT_EQ("-70", stats.rx_level);
        EXPECT_EQ("-101 -101 -92 9 9 17 ", SignalOf("17", "none", "-101"));
        EXPECT_EQ("-101", stats.rx_level);
    }
    stats.system_mode = stats.service_type = "LTE PS";
    EXPECT_EQ("-101 -101 -70 9 9 17 ", SignalOf("17", "-70", "-101"));
}

TEST_F(CardStatistics, AreWrittenInWholeFilesInThisOrder) {
    DumpAllCardInfo();
    EXPECT_THAT(FileSteps(), ElementsAre("write wireless.serialno", "write wireless.mdn",
                                         "write wireless.cardstats"));
}

TEST_F(CardStatistics, PublishTheTwoNumbersAlone) {
    stats.serial_number = "490154203237518";
    stats.mdn = "5551234567";
    DumpAllCardInfo();
    EXPECT_EQ("490154203237518\n", Published("wireless.serialno"));
    EXPECT_EQ("5551234567\n", Published("wireless.mdn"));
    stats.mdn = "";
    DumpAllCardInfo();
    EXPECT_EQ("\n", Published("wireless.mdn"));
}

TEST_F(CardStatistics, NumberTheContextsByTheirLine) {
    stats.sim_context_apns = "a\n\nb";
    DumpAllCardInfo();
    EXPECT_EQ("a", Value("CELLMODEM_SIM_CONT_APN0"));
    EXPECT_EQ("(no key)", Value("CELLMODEM_SIM_CONT_APN1"));
    EXPECT_EQ("b", Value("CELLMODEM_SIM_CONT_APN2"));
    stats.sim_context_apns = "\n1:internet\n";
    DumpAllCardInfo();
    EXPECT_EQ("(no key)", Value("CELLMODEM_SIM_CONT_APN0"));
    EXPECT_EQ("1:internet", Value("CELLMODEM_SIM_CONT_APN1"));
    EXPECT_EQ("(no key)", Value("CELLMODEM_SIM_CONT_APN2"));
}

TEST_F(CardStatistics, CleanTheQmiStateOfTheRecord) {
    g_i_CardType = kCardNovatelE362;
    stats.qmi_state = " CONNECTED \t\r\n";
    DumpAllCardInfo();
    EXPECT_EQ("CONNECTED", stats.qmi_state);
    EXPECT_EQ("CONNECTED", Value("CELLMODEM_QMI_STATE"));
    g_i_CardType = kCardSierra881;
    stats.qmi_state = " CONNECTED";
    DumpAllCardInfo();
    EXPECT_EQ(" CONNECTED", stats.qmi_state);
}

TEST_F(CardStatistics, ShowTheChannelInUse) {
    g_i_CardType = kCardSierra881;
    stats.gsm_channel = "128";
    stats.wcdma_channel = "4385";
    stats.gprs_state = "READY";
    DumpAllCardInfo();
    EXPECT_EQ("128", Value("CELLMODEM_CURRENT_CHAN"));
    EXPECT_EQ("128\n", Published("lightbar_chan_in"));
    stats.gprs_state = "";
    DumpAllCardInfo();
    EXPECT_EQ("4385", Value("CELLMODEM_CURRENT_CHAN"));
    EXPECT_EQ("4385\n", Published("lightbar_chan_in"));
    EXPECT_EQ("write lightbar_chan_in", FileSteps().front());
}

TEST_F(CardStatistics, ShowTheChannelOfThe881Only) {
    for (const int card : kEveryCard) {
        if (card == kCardSierra881) continue;
        g_i_CardType = card;
        DumpAllCardInfo();
        EXPECT_EQ("(missing)", Published("lightbar_chan_in")) << card;
    }
}

TEST_F(CardStatistics, AskForTheIccidBehindTheTimeStamp) {
    g_i_CardType = kCardMc75i;
    world.answers["AT^SCID"] = Answered({"^SCID: 89012604"});
    DumpAllCardInfo();
    EXPECT_EQ("89012604", Value("CELLMODEM_SIM_ID"));
    EXPECT_EQ(0U, Published("wireless.cardstats").find("#File generated 2026-03-14 09:15:00 \n"));
    EXPECT_GT(world.slept_us, 1000000);
}

TEST_F(CardStatistics, AreTracedAboveLevelOne) {
    stats.sim_context_apns = "1:a\n2:b\n";
    for (const char* line :
         {"running DumpAllCardInfo", "writing Device Properties to /var/log/wireless.cardstats",
          "DEBUG: APN token count is 3"}) {
        EXPECT_EQ(kAbove1, LevelsThatLog(line, DumpAllCardInfo)) << line;
    }
    EXPECT_THAT(LogAtLevel(1, DumpAllCardInfo), IsEmpty());
}

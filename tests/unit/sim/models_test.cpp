// Every model knows what a daemon asks of it, and tells a story that hangs together on its drive.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "bench_modem.h"

namespace {

using sim::kSecond;
using testing::HasSubstr;
using testing::MatchesRegex;

struct ModelCase {
    const char* profile;
    std::vector<std::string> commands;  // all of these end in OK
};

void PrintTo(const ModelCase& model, std::ostream* out) {
    *out << model.profile;
}

const std::vector<std::string> kEveryModel = {
    "AT",      "ATE0",     "AT+CREG=2",   "AT+CREG?", "AT+CSQ",    "AT+CIND?",   "at+gsn",
    "at+cnum", "AT+CPIN?", "AT+CGDCONT?", "AT+COPN",  "AT+CMGF=1", "AT+CMGD=0,1"};

class Model : public testing::TestWithParam<ModelCase> {};

TEST_P(Model, KnowsItsCommands) {
    BenchModem modem(GetParam().profile);
    std::vector<std::string> commands = kEveryModel;
    commands.insert(commands.end(), GetParam().commands.begin(), GetParam().commands.end());
    for (const std::string& command : commands) {
        EXPECT_THAT(modem.Ask(command), testing::EndsWith("\r\nOK\r\n")) << command;
    }
    EXPECT_THAT(modem.Unexpected(), testing::IsEmpty());
}

TEST_P(Model, HasATestImeiWithItsCheckDigit) {
    const std::string imei = sim::LoadProfile(GetParam().profile).settings.at("imei");
    ASSERT_THAT(imei, MatchesRegex("001017[0-9]{9}"));
    int sum = 0;
    for (std::size_t i = 0; i < imei.size(); ++i) {
        const int digit = (imei[i] - '0') * (i % 2 == 1 ? 2 : 1);
        sum += digit / 10 + digit % 10;
    }
    EXPECT_EQ(sum % 10, 0) << imei;
}

TEST_P(Model, DrivesThroughTownWithoutAStumble) {
    BenchModem modem(GetParam().profile);
    const sim::Profile profile = sim::LoadProfile(GetParam().profile);
    for (const sim::DriveStep& step : profile.drive) {
        if (step.control == "repeat") continue;
        EXPECT_EQ(modem.Tell(step.control), "ok") << step.control;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, Model,
    testing::Values(
        ModelCase{"generic", {}},
        ModelCase{"881",
                  {"AT+CSQ?", "at^sysinfo", "AT*CNTI=0", "AT!GETRAT?", "AT!PRIID?", "at+gmi",
                   "at+gmm", "at!gver?", "at^hver", "at!getband?", "AT!ICCID?", "at!GSMINFO?",
                   "at!gstatus?", "at+ecio?", "AT+CCLK?", "at!time?"}},
        ModelCase{"E362",
                  {"AT+CEREG?", "AT$NWSYSMODE", "at$qcsimstat?", "AT$NWRSSI=15", "AT+TEMP",
                   "AT$NWNN", "AT$NWMDN", "at+gmi", "at+gmm", "ATI3", "AT+ICCID?", "AT$NWQMISTATUS",
                   "AT$NWQMICONNECT=,,", "AT$NWQMIDISCONNECT", "AT$NWLTIME"}},
        ModelCase{"E371",
                  {"AT+CEREG?", "AT$NWRAT?", "at$qcsimstat?", "AT$NWRSSI=15", "AT+TEMP", "at+gmi",
                   "at+gmm", "ATI3", "AT+ICCID?", "AT$NWQMISTATUS", "AT$NWQMICONNECT=,,",
                   "AT$NWQMIDISCONNECT", "AT$CCLK?"}},
        ModelCase{"USB305",
                  {"at^sysinfo", "AT!GETRAT?", "AT!PRIID?", "at+gmi", "at+gmm", "at!gver?"}},
        ModelCase{"mc75i", {"AT^SCID"}}),
    [](const auto& model) { return std::string(model.param.profile); });

TEST(Drive, AnLteModemSeesTheWholeTown) {
    BenchModem modem("E362");
    modem.Tell("drive on");
    std::set<std::string> services, registrations, cells, signals;
    for (int second = 0; second < 610; second += 10) {
        services.insert(modem.Ask("AT$NWSYSMODE", kSecond));
        registrations.insert(modem.Ask("AT+CEREG?", kSecond));
        signals.insert(modem.Ask("AT+CSQ", kSecond));
        cells.insert(modem.Tell("status").substr(modem.Tell("status").find("\ncell: "), 20));
        modem.Wait(7 * kSecond);
    }
    EXPECT_THAT(services, testing::UnorderedElementsAre(Answered("LTE"), Answered("WCDMA"),
                                                        Answered("No Service")));
    EXPECT_THAT(registrations,
                testing::UnorderedElementsAre(Answered("+CEREG: 0,1"), Answered("+CEREG: 0,5"),
                                              Answered("+CEREG: 0,2")));
    EXPECT_GE(signals.size(), 10u);
    EXPECT_EQ(cells.size(), 5u);
}

TEST(Drive, RunsAgainAndStopsWhenTold) {
    BenchModem modem("881");
    modem.Tell("drive on");
    EXPECT_EQ(modem.Ask("AT+CSQ", 380 * kSecond), Answered("+CSQ: 24,0"));
    EXPECT_EQ(modem.Ask("AT+CSQ", 220 * kSecond), Answered("+CSQ: 99,99"));
    EXPECT_EQ(modem.Ask("AT+CSQ", kSecond), Answered("+CSQ: 24,0"));
    modem.Tell("drive off");
    modem.Wait(380 * kSecond);
    EXPECT_EQ(modem.Ask("AT+CSQ"), Answered("+CSQ: 24,0"));
    EXPECT_EQ(modem.NextEvent(), sim::kNever);
}

TEST(Drive, MayStartWithTheModem) {
    sim::Profile profile = sim::LoadProfile("881");
    profile.settings["drive"] = "on";
    sim::Modem modem(profile);
    EXPECT_EQ(modem.NextEvent(), 0);
    modem.Transmit(0);
    EXPECT_EQ(modem.NextEvent(), 60 * kSecond);
}

TEST(StatusPage, ChangesItsFaceWithTheAccess) {
    BenchModem modem("881");
    EXPECT_THAT(modem.Ask("at!gstatus?"), HasSubstr("\r\nWCDMA band:    WCDMA1900\tGSM band:"));
    modem.Tell("service lte");
    const std::string lte = modem.Ask("at!gstatus?");
    EXPECT_THAT(lte, HasSubstr("System mode:   LTE\t\tPS state:"));
    EXPECT_THAT(lte, HasSubstr("RSRP (dBm):    -106\t\tTAC:"));
    modem.Tell("service none");
    EXPECT_THAT(modem.Ask("at!gstatus?"), HasSubstr("System mode:   NO SERVICE\t"));
}

TEST(StatusPage, TheMc7700HasItsOwnRxLevels) {
    BenchModem modem("881");
    modem.Tell("set model MC7700");
    EXPECT_EQ(modem.Ask("at+gmm"), Answered("MC7700"));
    EXPECT_THAT(modem.Ask("at!gstatus?"),
                HasSubstr("RX level C0:   -79\t\tLAC:         1A2B (6699)\r\n"));
}

TEST(Health, TemperatureMovesSlowly) {
    BenchModem modem("E371");
    std::set<std::string> seen;
    for (int minute = 0; minute < 16; ++minute) seen.insert(modem.Ask("AT+TEMP", 60 * kSecond));
    EXPECT_EQ(seen.size(), 5u);
}

}  // namespace

// What the daemon owes to each card of the table in its first minutes.
#include <gmock/gmock.h>

#include "rig/card_options.h"
#include "rig/world.h"
#include "scenarios/worlds/daemon_words.h"
#include "sim/modem/profile.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::Kind;
using rig::World;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr char kStatistics[] = "/var/log/wireless.cardstats";
constexpr char kActivation[] = "/var/log/wirelessactivation_status";

class EveryCard : public testing::TestWithParam<cards::Model> {
  protected:
    EveryCard() : world_(rig::OptionOf(GetParam())) {
        world_.Start();
        world_.RunFor(2min);
    }

    static bool Can(cards::Ability ability) { return (GetParam().abilities & ability) != 0; }

    World world_;
};

INSTANTIATE_TEST_SUITE_P(Table, EveryCard, testing::ValuesIn(cards::kModels),
                         [](const auto& test) { return test.param.name; });

TEST_P(EveryCard, HasAModemOfItsName) {
    EXPECT_EQ(world_.modem.Sim().Name(), GetParam().name);
    const std::string told = std::string("card type set to ") + GetParam().logged_as;
    EXPECT_EQ(world_.trace.CountLog(told), cards::HasOption(GetParam()) ? 1U : 0U);
}

TEST_P(EveryCard, TellsItsSerialNumber) {
    const std::string imei = sim::LoadProfile(GetParam().name).settings.at("imei");
    EXPECT_THAT(Files::Read(kStatistics), HasSubstr("CELLMODEM_IMEI=" + imei + "\n"));
    EXPECT_EQ(Files::Read("/var/log/wireless.serialno"), imei + "\n");
}

TEST_P(EveryCard, IsAskedForItsRegistrationWhenItCanTell) {
    if (!Can(cards::kRegistration)) {
        EXPECT_FALSE(Files::Exists(kActivation));
        EXPECT_THAT(world_.trace.Commands(), Not(Contains(HasSubstr("REG?"))));
        return;
    }
    EXPECT_EQ(Files::Read(kActivation), "Reg Home\n");
    EXPECT_THAT(world_.trace.Commands(), Contains(Can(cards::kLteCall) ? "AT+CEREG?" : "AT+CREG?"));
}

TEST_P(EveryCard, IsAskedForTheTextModeWhenItMayHaveOne) {
    EXPECT_EQ(world_.trace.CountLog("Modem supports CMGF SMS"), Can(cards::kMessages) ? 1U : 0U);
}

TEST_P(EveryCard, HasTheDataCallWatchedWhenItHasOne) {
    const auto watched = Contains("AT$NWQMISTATUS");
    if (Can(cards::kLteCall)) {
        EXPECT_THAT(world_.trace.Commands(), watched);
    } else {
        EXPECT_THAT(world_.trace.Commands(), Not(watched));
        EXPECT_THAT(world_.trace.Shell(), Not(Contains(HasSubstr("wwan0"))));
    }
}

// The random worlds take any other command for a fault.
TEST_P(EveryCard, IsAskedNothingThatTheRandomWorldsDoNotKnow) {
    worlds::Given given;
    given.card = GetParam().type;
    for (const std::string& command : world_.trace.Commands()) {
        const std::vector<std::string> known = worlds::CommandsOf(given.card);
        EXPECT_THAT(known, Contains(command));
    }
}

}  // namespace

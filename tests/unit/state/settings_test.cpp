// What the settings tell of the card.
#include "state/settings.h"

#include "fakes/fixture.h"

namespace {

class Settings : public fake::DaemonTest {};

TEST_F(Settings, OnlySevenAndEightAreLteCards) {
    for (int card = -1; card < 12; ++card) {
        g_i_CardType = card;
        EXPECT_EQ(IsLteCard(), card == 7 || card == 8) << card;
    }
}

}  // namespace

// The numbers that the rest of the program, and the logs of the field, count on.
#include "state/settings.h"

#include "fakes/fixture.h"

namespace {

class Settings : public fake::DaemonTest {};

TEST(CardTypes, HaveTheirFixedNumbers) {
    EXPECT_EQ(kCardGeneric, 0);
    EXPECT_EQ(kCardSierra881, 2);
    EXPECT_EQ(kCardType3, 3);
    EXPECT_EQ(kCardSierraUsb305, 4);
    EXPECT_EQ(kCardMc75i, 6);
    EXPECT_EQ(kCardNovatelE362, 7);
    EXPECT_EQ(kCardNovatelE371, 8);
}

TEST_F(Settings, OnlySevenAndEightAreLteCards) {
    for (int card = -1; card < 12; ++card) {
        g_i_CardType = card;
        EXPECT_EQ(IsLteCard(), card == 7 || card == 8) << card;
    }
}

TEST(Terminators, AreOneByteEach) {
    EXPECT_EQ(g_c_CR, 0x0D);
    EXPECT_EQ(g_c_LF, 0x0A);
}

TEST(PortPath, HoldsEightyCharacters) {
    EXPECT_EQ(sizeof(g_c_PortPath), 80u);
}

}  // namespace

#include "connection/apn_provisioning.h"

#include "connection_test.h"
#include "state/settings.h"

namespace {

class ApnProvisioning : public ConnectionTest {
  protected:
    ApnProvisioning() {
        g_i_CardType = kCardNovatelE362;
        g_S_PppConfig.apn = "My.APN";
    }
};

const Lines kProvisioned = {
    "log: Setting Context 3 APN to 'My.APN'",
    "modem: AT+NWAPNE=3,\"My.APN\",True,1439,V4,0.0.0.0,0.0.0.0,"
    "0:0:0:0:0:0:0:0,0:0:0:0:0:0:0:0,HRPD_EHRPD",
    "modem: AT+CGDCONT=3,\"ipv4v6\",\"My.APN\"",
    "modem: AT$NWQMIDISCONNECT",
    "sleep 1000 ms",
};

TEST_F(ApnProvisioning, WritesContextThreeAndDropsTheCallOfBothLteCards) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        StartStory();
        SetApnContext3();
        EXPECT_EQ(Story(), kProvisioned);
    }
}

TEST_F(ApnProvisioning, NeverReachesAnotherCard) {
    for (const int card : {0, 2, 3, 4, 6, 9}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        SetApnContext3();
        EXPECT_EQ(Story(), Lines{});
    }
}

TEST_F(ApnProvisioning, DoesNothingWithoutAnApn) {
    g_S_PppConfig.apn = "";
    SetApnContext3();
    EXPECT_EQ(Story(), Lines{});
    EXPECT_EQ(world.slept_us, 0);
}

// 70 ms for each of the two commands, 20 ms between them, 1040 ms for the disconnect.
TEST_F(ApnProvisioning, PausesTwentyMillisecondsBetweenTheCommands) {
    SetApnContext3();
    EXPECT_EQ(world.slept_us, (70 + 20 + 70 + 1040) * 1000);
}

TEST_F(ApnProvisioning, DropsTheCallAlsoWhenTheModemRejectsTheApn) {
    world.answers
        ["AT+NWAPNE=3,\"My.APN\",True,1439,V4,0.0.0.0,0.0.0.0,"
         "0:0:0:0:0:0:0:0,0:0:0:0:0:0:0:0,HRPD_EHRPD"] = "\r\nERROR\r\n";
    world.answers["AT+CGDCONT=3,\"ipv4v6\",\"My.APN\""] = "\r\n+CME ERROR: 3\r\n";
    SetApnContext3();
    EXPECT_EQ(Story(), kProvisioned);
}

TEST_F(ApnProvisioning, SurvivesADeadPort) {
    BreakPort();
    SetApnContext3();
    EXPECT_EQ(world.log, Lines{"Setting Context 3 APN to 'My.APN'"});
    EXPECT_EQ(g_i_PortErrorCounter, 3);
}

}  // namespace

#include "sim/modem/data_call.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sim::DataCall;
using sim::kNever;
using sim::kSecond;
using testing::ElementsAre;

class Call : public testing::Test {
  protected:
    Call() {
        call.on_link = [this](bool up) { links.push_back(up); };
        call.SetTimes(2 * kSecond, 1 * kSecond, 60 * kSecond);
    }

    void RunUntil(sim::Micros end) {
        while (call.Next() <= end) call.Run(now = call.Next());
        now = end;
    }

    std::string State() const { return call.StateText(); }

    DataCall call;
    std::vector<bool> links;
    sim::Micros now = 0;
};

TEST_F(Call, TakesItsTimeToComeUp) {
    call.Connect(0, true);
    EXPECT_EQ(State(), "CONNECTING");
    EXPECT_EQ(call.Next(), 2 * kSecond);
    RunUntil(2 * kSecond);
    EXPECT_EQ(State(), "CONNECTED");
    EXPECT_EQ(call.Next(), kNever);
    EXPECT_THAT(links, ElementsAre(true));
    EXPECT_EQ(call.Duration(3725 * kSecond), "01:02:03");
}

TEST_F(Call, TakesItsTimeToGoDownButTheLinkIsDeadAtOnce) {
    call.ForceUp(0);
    call.Disconnect(10 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTING");
    EXPECT_THAT(links, ElementsAre(true, false));
    RunUntil(11 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTED");
    EXPECT_EQ(call.EndReason(), sim::kEndedByClient);
    EXPECT_EQ(call.Duration(99 * kSecond), "00:00:10");
}

TEST_F(Call, FailsWithTheResultAndReasonItWasTold) {
    call.FailNext(29, 10, 2);
    for (int attempt = 0; attempt < 2; ++attempt) {
        call.Connect(now, true);
        RunUntil(now + 5 * kSecond);
        EXPECT_EQ(State(), "DISCONNECTED");
        EXPECT_EQ(call.Result(), 29);
        EXPECT_EQ(call.EndReason(), 10);
    }
    call.Connect(now, true);
    RunUntil(now + 5 * kSecond);
    EXPECT_EQ(State(), "CONNECTED");
    EXPECT_EQ(call.Result(), sim::kQmiSuccess);
}

TEST_F(Call, FailsWithoutService) {
    call.Connect(0, false);
    RunUntil(5 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTED");
    EXPECT_EQ(call.Result(), sim::kQmiCallFailed);
    EXPECT_EQ(call.EndReason(), sim::kNoService);
    EXPECT_THAT(links, ElementsAre());
}

TEST_F(Call, ASecondConnectIsRefusedAndHarmsNothing) {
    call.ForceUp(0);
    call.Connect(kSecond, true);
    EXPECT_EQ(call.Result(), sim::kQmiAlreadyStarted);
    EXPECT_EQ(State(), "CONNECTED");
}

TEST_F(Call, LastsAsLongAsItWasTold) {
    call.SetLasts(30 * kSecond);
    call.ForceUp(0);
    RunUntil(29 * kSecond);
    EXPECT_EQ(State(), "CONNECTED");
    RunUntil(30 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTED");
    EXPECT_EQ(call.EndReason(), sim::kReleasedByNetwork);
}

TEST_F(Call, OutlivesAShortLossOfService) {
    call.ForceUp(0);
    call.ServiceChanged(false, 0);
    RunUntil(59 * kSecond);
    call.ServiceChanged(true, 59 * kSecond);
    RunUntil(200 * kSecond);
    EXPECT_EQ(State(), "CONNECTED");
    call.ServiceChanged(false, 200 * kSecond);
    call.ServiceChanged(false, 250 * kSecond);
    RunUntil(260 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTED");
    EXPECT_EQ(call.EndReason(), sim::kNoService);
}

TEST_F(Call, WithoutAnAddressTheLinkStaysDead) {
    call.SetNoAddress(true);
    call.ForceUp(0);
    EXPECT_EQ(State(), "CONNECTED");
    EXPECT_THAT(links, ElementsAre());
    call.SetNoAddress(false);
    EXPECT_THAT(links, ElementsAre(true));
}

TEST_F(Call, AnUnknownStateHidesTheTrueOne) {
    call.ForceUp(0);
    call.SetUnknown(true);
    EXPECT_EQ(State(), "unknown");
    call.SetUnknown(false);
    EXPECT_EQ(State(), "CONNECTED");
}

TEST_F(Call, DropsWithTheGivenReason) {
    call.ForceUp(0);
    call.Drop(7, 4 * kSecond);
    EXPECT_EQ(State(), "DISCONNECTED");
    EXPECT_EQ(call.EndReason(), 7);
    EXPECT_EQ(call.Duration(kNever), "00:00:04");
    call.Drop(8, 5 * kSecond);
    EXPECT_EQ(call.EndReason(), 7) << "a call that is down has nothing to drop";
}

}  // namespace

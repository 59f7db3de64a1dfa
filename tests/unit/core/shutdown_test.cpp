// The handlers only set their flags. The ways out are played in the scenarios, as they end the
// process.
#include "core/shutdown.h"

#include <csignal>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

class Shutdown : public fake::DaemonTest {
  protected:
    Shutdown() { InstallSignalHandlers(); }
    ~Shutdown() override {
        for (const int number : {SIGINT, SIGHUP, SIGTERM}) std::signal(number, SIG_DFL);
        g_b_GotSigInt = g_b_GotSigHup = g_b_GotSigTerm = 0;
    }
};

TEST_F(Shutdown, WithoutASignalNothingHappens) {
    CheckSignals();
    EXPECT_TRUE(world.log.empty());
    EXPECT_TRUE(world.shell.empty());
}

TEST_F(Shutdown, EachSignalSetsItsOwnFlagAndDoesNothingElse) {
    std::raise(SIGINT);
    EXPECT_EQ(g_b_GotSigInt, 1);
    EXPECT_EQ(g_b_GotSigHup + g_b_GotSigTerm, 0);
    std::raise(SIGHUP);
    EXPECT_EQ(g_b_GotSigHup, 1);
    EXPECT_EQ(g_b_GotSigTerm, 0);
    std::raise(SIGTERM);
    EXPECT_EQ(g_b_GotSigTerm, 1);
    EXPECT_TRUE(world.log.empty());
    EXPECT_TRUE(world.shell.empty());
}

TEST_F(Shutdown, TheFlagsAreNeverCleared) {
    std::raise(SIGHUP);
    std::raise(SIGHUP);
    EXPECT_EQ(g_b_GotSigHup, 1);
}

}  // namespace

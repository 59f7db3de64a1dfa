// Passes of the main loop against a modem that answers at once, for an instruction counter. Started
// by gear/bench/instructions, in a private mount namespace: the loop writes the daemon's own files.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/main_loop.h"
#include "fakes/fixture.h"
#include "sim/modem/modem.h"
#include "state/settings.h"

namespace {

constexpr long kPasses = 200;
constexpr sim::Micros kLongEnough = 60 * 1000000LL;  // for any answer

struct Enough {};

// Every command of a pass with the simulated modem's answer to it.
void LearnAnswers(fake::World& world, const char* profile) {
    sim::Modem modem(sim::LoadProfile(profile));
    sim::Micros now = 0;
    for (const char* command : {"ATE0",
                                "at^sysinfo",
                                "at$qcsimstat?",
                                "at!getband?",
                                "AT$NWSYSMODE",
                                "AT$NWRAT?",
                                "AT*CNTI=0",
                                "at+ecio?",
                                "AT$NWRSSI=15",
                                "AT+TEMP",
                                "at!gstatus?",
                                "AT+CREG?",
                                "AT+CEREG?",
                                "AT$NWNN",
                                "AT$NWMDN",
                                "at+cnum",
                                "at+gsn",
                                "AT!PRIID?",
                                "AT+CGDCONT?",
                                "at+gmi",
                                "at+gmm",
                                "ATI3",
                                "at!gver?",
                                "at^hver",
                                "at!GSMINFO?",
                                "AT+COPN",
                                "AT+CSQ",
                                "AT!ICCID?",
                                "AT^SCID",
                                "AT+ICCID?",
                                "AT+CMGL=\"REC UNREAD\"",
                                "AT+CMGD=0,1",
                                "AT$NWQMISTATUS"}) {
        modem.Receive(std::string(command) + "\r", now);
        now += kLongEnough;
        world.answers[command] = modem.Transmit(now);
    }
}

class Pass : public fake::DaemonTest {};

TEST_F(Pass, Costs) {
    const char* card = std::getenv("CARD");
    g_i_CardType = card != nullptr ? std::atoi(card) : 0;
    const cards::Model* model = cards::ModelOfType(g_i_CardType);
    ASSERT_NE(model, nullptr) << "CARD is the number of a card";
    LearnAnswers(world, model->name);
    long passes = 0;
    // Only the pause at the end of a pass lasts two seconds at a stretch.
    std::int64_t before = world.now_us;
    world.on_sleep = [&](std::int64_t now) {
        passes += now - before == 2000000 ? 1 : 0;
        before = now;
        if (passes >= kPasses) throw Enough();
    };
    EXPECT_THROW(RunMainLoop(), Enough);
    std::printf("passes: %ld\n", passes);
}

}  // namespace

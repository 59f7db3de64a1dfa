// A drive, captured at debug level 4, converted and played again: the daemon comes to the same.
#include <gmock/gmock.h>

#include "captured_life.h"
#include "state/cards.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(RoundTrip, The881DrivesThroughTown) {
    ExpectRoundTrip(Live("-881", LogForm::kRsyslog, DriveWithMessages));
}

TEST(RoundTrip, The881OutOfALogWithWholeSeconds) {
    ExpectRoundTrip(Live("-881", LogForm::kClassic, DriveWithMessages));
}

TEST(RoundTrip, TheE362DropsItsCall) {
    const Life lived = Live("-E362", LogForm::kRsyslog, DriveWithACall);
    EXPECT_THAT(lived.log, HasSubstr("AT$NWQMICONNECT"));
    ExpectRoundTrip(lived);
}

TEST(RoundTrip, TheE362OutOfLogread) {
    ExpectRoundTrip(Live("-E362", LogForm::kLogread, DriveWithACall));
}

// Nothing of what the modem told about itself and others is in the story.
TEST(RoundTrip, TheStoryHasOtherIdentities) {
    const Life lived = Live("-881", LogForm::kRsyslog, DriveWithMessages);
    const std::string story = Converted(lived.log);
    for (const char* const secret : {"001017088100014", "8900101000000000019", "2015550188",
                                     "15551234567", "15557654321", "harbor", "door"}) {
        ASSERT_THAT(lived.log, HasSubstr(secret)) << "not even in the log";
        EXPECT_THAT(story, Not(HasSubstr(secret)));
    }
}

// Whatever the simulated modems say can be placed, and tells whose it is.
TEST(RoundTrip, EveryCardHasAStory) {
    for (const cards::Model& model : cards::kModels) {
        SCOPED_TRACE(model.name);
        const bool generic = model.type == kCardGeneric;
        const Life lived = Live(generic ? "" : "-" + std::string(model.name), LogForm::kRsyslog,
                                [](rig::World& world) { world.RunFor(std::chrono::minutes(11)); });
        EXPECT_THAT(Converted(lived.log), StartsWith("story " + std::string(model.name) + "\n"));
    }
}

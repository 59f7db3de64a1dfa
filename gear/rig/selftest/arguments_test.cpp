// What a story may call the daemon with.

#include "rig/arguments.h"

#include <stdexcept>

#include "rig/card_options.h"
#include "selftest/sample_world.h"

using namespace rig;
using ::testing::ElementsAre;

TEST(Arguments, WithAnOptionThatTheDaemonDoesNotKnowAreAnError) {
    EXPECT_THROW(World("-E999"), std::invalid_argument);
    EXPECT_THROW(World("-881 -E999 /dev/ttyUSB1"), std::invalid_argument);
    EXPECT_THROW(World("-"), std::invalid_argument);
    EXPECT_NO_THROW(World(Exactly{{"-E999"}}));
}

TEST(Arguments, OfEveryCardAreTaken) {
    for (const cards::Model& model : cards::kModels) {
        const std::vector<std::string> arguments = ArgumentsOf(OptionOf(model) + " -d -cind1");
        EXPECT_EQ(ProfileOf(arguments), model.name);
    }
}

TEST(Arguments, OfTheLastCardDecide) {
    EXPECT_EQ(ProfileOf(ArgumentsOf("-881 -E362")), "E362");
}

TEST(Arguments, GetTheUsualDeviceWhenTheyNameNone) {
    EXPECT_THAT(ArgumentsOf("-d"), ElementsAre("-d", "/dev/ttyUSB0"));
    EXPECT_THAT(ArgumentsOf("/dev/ttyS1 -d"), ElementsAre("/dev/ttyS1", "-d"));
    EXPECT_EQ(DeviceOf({"-d", "/dev/ttyS1"}), "/dev/ttyS1");
}

// The model that says where it is by labels of its own.
#include <gmock/gmock.h>

#include "published.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using testing::HasSubstr;

TEST(Mc7700, IsReadByItsOwnLabels) {
    World world("-881");
    Teach(world, {{"at+gmm", {"MC7700"}},
                  {"AT+CREG?", {"+CREG: 0,1"}},
                  {"at!gstatus?",
                   {"System mode:   WCDMA\t\tPS state:    Attached", "Serving Cell:  9 (9)",
                    "RX level (dBm):-71", "RX level C0:   -80\t\tLAC:         1A2B (6699)",
                    "RX level C1:   -81\t\tCell ID:     0A1B (2587)"}}});
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(1U, world.trace.CountLog("Setting Specific model number to MC7700"));
    const std::string text = Files::Read(kStatistics);
    EXPECT_THAT(text, HasSubstr("\nCELLMODEM_MODEL=MC7700\n"));
    EXPECT_THAT(text, HasSubstr("\nCELLMODEM_RX_LEVEL=\n"
                                "CELLMODEM_RX_LEVEL_C0=-80\n"
                                "CELLMODEM_RX_LEVEL_C1=-81\n"
                                "CELLMODEM_LOCATION_AREA_CODE=1A2B (6699)\n"
                                "CELLMODEM_SERVING_CELL=0A1B (2587)\n"));
}

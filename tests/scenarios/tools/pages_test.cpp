// The status page of each card, whole, against pages that were checked by hand: NAME.expected.
#include <gtest/gtest.h>

#include <fstream>

#include "../connection/carrier.h"
#include "copied_router.h"

using namespace std::chrono_literals;
using rig::World;

namespace {

std::string Expected(const std::string& name) {
    std::ifstream file(SCENARIO_FOLDER "/" + name + ".expected");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Card {
    const char* name;
    bool has_link;
    int status;
};

void PrintTo(const Card& card, std::ostream* out) {
    *out << card.name;
}

class StatusPage : public ::testing::TestWithParam<Card> {};

TEST_P(StatusPage, OfTheCardIsAsExpected) {
    const Card& card = GetParam();
    World world(std::string("-") + card.name);
    std::unique_ptr<Carrier> carrier;
    if (card.has_link) carrier = std::make_unique<Carrier>(world);
    world.Start();
    world.RunFor(3min);
    CopiedRouter router(world);
    if (card.has_link) {
        router.SetAddress("10.64.0.2");
        router.Write("/sys/class/net/wwan0/statistics/tx_bytes", "1234567\n");
        router.Write("/sys/class/net/wwan0/statistics/rx_bytes", "726\n");
    }
    const ToolResult page = router.Run("status");
    EXPECT_EQ(page.output, Expected(std::string("status_") + card.name));
    EXPECT_EQ(page.status, card.status);
}

INSTANTIATE_TEST_SUITE_P(Cards, StatusPage,
                         ::testing::Values(Card{"881", false, 0}, Card{"E362", true, 0},
                                           Card{"E371", true, 0}, Card{"USB305", false, 0},
                                           Card{"mc75i", false, 0}),
                         [](const auto& card) { return std::string(card.param.name); });

}  // namespace

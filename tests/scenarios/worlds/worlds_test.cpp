// Worlds drawn from seeds. RIG_SEED=<n> makes another dozen and a half of them.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "scenarios/worlds/random_world.h"

using namespace worlds;

namespace {

constexpr unsigned kWorlds = 18;

std::string AsText(const rig::Event& event) {
    std::ostringstream text;
    text << event;
    return text.str();
}

}  // namespace

class AnyWorld : public testing::TestWithParam<unsigned> {};

TEST_P(AnyWorld, KeepsItsPromises) {
    const Plan plan = DrawPlan(rig::Seed(), GetParam());
    std::ostringstream description;
    description << plan;
    SCOPED_TRACE(description.str());
    RandomWorld world(plan);
    world.Live();
}

INSTANTIATE_TEST_SUITE_P(Worlds, AnyWorld, testing::Range(0U, kWorlds));

TEST(AllWorlds, HaveEveryCardEveryEndingAndEveryHappening) {
    std::set<CardType> models;
    std::set<Ending> endings;
    std::set<const Happening*> happenings;
    for (unsigned number = 0; number < kWorlds; ++number) {
        const Plan plan = DrawPlan(rig::Seed(), number);
        models.insert(plan.card);
        endings.insert(plan.ending);
        for (const Plan::Drawn& drawn : plan.happenings) happenings.insert(drawn.happening);
    }
    EXPECT_EQ(models.size(), std::size(cards::kModels));
    EXPECT_EQ(endings.size(), 4U);
    EXPECT_EQ(happenings.size(), Happenings().size());
}

TEST(QuietWorld, NeedsNoMoreMemoryFromHourToHour) {
    for (const cards::Model& model : cards::kModels) {
        SCOPED_TRACE(model.name);
        Plan plan;
        plan.card = model.type;
        plan.length = 4h;
        RandomWorld world(plan);
        world.Live();
        if (HasFailure()) return;
    }
}

TEST(AllWorlds, AreTheSameForTheSameSeed) {
    std::vector<rig::Event> first;
    for (const bool again : {false, true}) {
        Plan plan = DrawPlan(rig::Seed(), 1);
        plan.length = 40min;
        RandomWorld world(plan);
        world.Record();
        world.Live();
        if (!again) {
            ASSERT_FALSE(HasFailure());
            first = world.Chronicle();
            continue;
        }
        const std::vector<rig::Event>& second = world.Chronicle();
        ASSERT_GT(first.size(), 1000U);
        for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
            ASSERT_EQ(AsText(first[i]), AsText(second[i])) << "event " << i;
            ASSERT_EQ(first[i].text, second[i].text) << "event " << i;
        }
        EXPECT_EQ(first.size(), second.size());
    }
}

TEST(AllWorlds, DifferFromSeedToSeed) {
    std::set<std::string> descriptions;
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        std::ostringstream description;
        description << DrawPlan(seed, 0);
        descriptions.insert(description.str());
    }
    EXPECT_EQ(descriptions.size(), 50U);
}

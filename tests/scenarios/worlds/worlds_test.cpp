// Worlds drawn from seeds. RIG_SEED=<n> makes another dozen and a half of them.
//
// scripts/endure asks for less than a whole world: WORLD_ONLY="4.1 17.3" leaves out all happenings
// but the first of row 4 of the table and the third of row 17; WORLD_LONGEST=<minutes> ends each
// world earlier; with WORLD_TELLS=1 each tells how long it was, and what has happened when it
// failed.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
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

void Cut(Plan& plan) {
    if (const char* longest = std::getenv("WORLD_LONGEST")) {
        plan.length = std::min<Duration>(plan.length, std::atoi(longest) * 1min);
    }
    const char* only = std::getenv("WORLD_ONLY");
    if (only == nullptr) return;
    plan.only.emplace();
    std::istringstream words(only);
    Occurrence occurrence;
    for (char point = 0; words >> occurrence.first >> point >> occurrence.second;) {
        plan.only->insert(occurrence);
    }
}

void TellWhatHappened(const RandomWorld& world) {
    if (std::getenv("WORLD_TELLS") == nullptr) return;
    std::cout << "lived " << world.clock.Now() / 1s << " s\n";
    if (!testing::Test::HasFailure()) return;
    for (const auto& [when, occurrence] : world.Happened()) {
        std::cout << "happened " << occurrence.first << "." << occurrence.second << " " << when / 1s
                  << " s " << Happenings()[occurrence.first].what << "\n";
    }
}

}  // namespace

class AnyWorld : public testing::TestWithParam<unsigned> {};

TEST_P(AnyWorld, KeepsItsPromises) {
    Plan plan = DrawPlan(rig::Seed(), GetParam());
    Cut(plan);
    std::ostringstream description;
    description << plan;
    SCOPED_TRACE(description.str());
    RandomWorld world(plan);
    world.Live();
    TellWhatHappened(world);
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

// Without those of its ending, which comes at a moment that the shell's troubles have a part in.
std::vector<std::pair<Duration, Occurrence>> HappenedBefore(Duration end,
                                                            const RandomWorld& world) {
    std::vector<std::pair<Duration, Occurrence>> happened;
    for (const auto& one : world.Happened()) {
        if (one.first <= end) happened.push_back(one);
    }
    return happened;
}

// A world without some of its happenings has the others at their times and as they were.
TEST(AllWorlds, KeepTheOtherHappeningsWhenSomeAreLeftOut) {
    Plan plan = DrawPlan(rig::Seed(), 2);
    plan.length = 40min;
    std::vector<std::pair<Duration, Occurrence>> all;
    {
        RandomWorld world(plan);
        world.Live();
        all = HappenedBefore(plan.length, world);
    }
    ASSERT_GT(all.size(), 10U);
    plan.only.emplace();
    std::vector<std::pair<Duration, Occurrence>> chosen;
    for (std::size_t i = 0; i < all.size(); i += 3) {
        plan.only->insert(all[i].second);
        chosen.push_back(all[i]);
    }
    RandomWorld world(plan);
    world.Live();
    EXPECT_EQ(HappenedBefore(plan.length, world), chosen);
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

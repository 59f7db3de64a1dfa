// A day of traffic in both directions.
#include <set>

#include "sms_world.h"

using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(SmsDay, LosesNothingAndKeepsNothing) {
    constexpr std::size_t kMessages = 24 * 60 - 2;  // one a minute each way; the last have time
    SmsWorld world;
    world.trace.Keep({rig::Kind::kLog});
    world.modem.Sim().SetHeardLimit(100);
    std::size_t dropped = 0;
    std::size_t arrived = 0;
    world.clock.Every(1min, [&] {
        if (dropped == kMessages) return;
        ++dropped;
        world.Drop("out" + std::to_string(dropped),
                   "TO=+15551234567\nMSG=out " + std::to_string(dropped) + "\n");
        ++arrived;
        world.Arrive("+15557654321", "in " + std::to_string(arrived));
    });
    world.Start();
    world.RunFor(24h);

    const auto sent = world.Sent();
    EXPECT_THAT(sent, SizeIs(kMessages));
    EXPECT_THAT(std::set<std::string>(sent.begin(), sent.end()), SizeIs(kMessages));
    EXPECT_THAT(SmsWorld::Waiting(), IsEmpty());
    EXPECT_THAT(world.files.List("/tmp/sms/send_fail"), IsEmpty());

    std::set<std::string> texts;
    for (const std::string& file : SmsWorld::Received())
        texts.insert(file.substr(file.find("MSG=")));
    EXPECT_THAT(texts, SizeIs(kMessages));
    EXPECT_EQ(texts.count("MSG=in 1\n"), 1u);
    EXPECT_EQ(texts.count("MSG=in " + std::to_string(kMessages) + "\n"), 1u);
    EXPECT_EQ(world.modem.Sim().GetState().sms.Used(), 0);
}

#include "modemctl/sms_wait.h"

#include <gtest/gtest.h>

namespace modemctl {
namespace {

class SendStoryTest : public ::testing::Test {
  protected:
    Fate After(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) story_.Take({0, line});
        return story_.fate();
    }

    SendStory story_{"17.1"};
};

const char* const kReading = "Reading SMS File /tmp/sms/send/17.1";

TEST_F(SendStoryTest, EndsWithItsOwnSuccess) {
    EXPECT_EQ(After({"Reading SMS File /tmp/sms/send/other", "Send Success: TO=1, MSG=x"}),
              Fate::kWaiting);
    EXPECT_EQ(After({kReading, "SMS Message too long (151 chars), truncating to 150 chars",
                     "Send Success: TO=1, MSG=x"}),
              Fate::kSent);
    EXPECT_EQ(story_.sign(), "Send Success: TO=1, MSG=x");
}

TEST_F(SendStoryTest, TakesAnotherFilesSuccessForNothing) {
    EXPECT_EQ(After({kReading, "CMS error #38: Network out of order",
                     "Send #1 Failed: TO=1, MSG=x (truncated)",
                     "Reading SMS File /tmp/sms/send/17.10", "Send Success: TO=1, MSG=x"}),
              Fate::kWaiting);
    EXPECT_EQ(story_.attempts(), 1);
}

TEST_F(SendStoryTest, FailsWithTheNetworksReason) {
    EXPECT_EQ(After({kReading, "CMS error #38: Network out of order",
                     "Send #3 Failed : TO=1, MSG=x (truncated)",
                     "Max send attempt, moving file to /tmp/sms/send_fail//17.1.20260314-091502"}),
              Fate::kFailed);
    EXPECT_EQ(story_.sign(), "CMS error #38: Network out of order");
}

TEST_F(SendStoryTest, IsRefusedWhenTheModemRefusesTheNumberOrTheDaemonTheFile) {
    EXPECT_EQ(After({kReading, "Got ERROR (not CMS error) trying to send SMS to '1'",
                     "Send #3 Failed : TO=1, MSG=x (truncated)",
                     "Max send attempt, moving file to /tmp/sms/send_fail//17.1.20260314-091502"}),
              Fate::kRefused);
    SendStory other("18");
    other.Take({0, "Reading SMS File /tmp/sms/send/18"});
    other.Take({0, "SMS send file /tmp/sms/send/18 is invalid, deleting"});
    EXPECT_EQ(other.fate(), Fate::kRefused);
}

TEST_F(SendStoryTest, AgesOut) {
    EXPECT_EQ(After({"Deleting SMS file '/tmp/sms/send/17.1', older than 1440 minutes."}),
              Fate::kAgedOut);
}

TEST_F(SendStoryTest, IsNotForgedByAReceivedText) {
    EXPECT_EQ(After({kReading, "Got SMS from 1 at t, Message: Send Success: TO=1, MSG=x"}),
              Fate::kWaiting);
}

}  // namespace
}  // namespace modemctl

#include "modemctl/follow_state.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "scratch.h"

namespace modemctl {
namespace {

class FollowStateTest : public ::testing::Test {
  protected:
    std::string Folder() const { return scratch_.root() + "/state"; }
    std::string File() const { return Folder() + "/follow.state"; }

    Scratch scratch_;
};

TEST_F(FollowStateTest, RemembersAcrossRestarts) {
    {
        FollowState state;
        ASSERT_EQ(state.Open(Folder()), "");
        EXPECT_EQ(state.Get("a").handling, Handling::kNew);
        EXPECT_TRUE(state.Note("a", Handling::kBegun));
        EXPECT_TRUE(state.Note("a", Handling::kFailed));
        EXPECT_TRUE(state.Note("a", Handling::kBegun));
        EXPECT_TRUE(state.Note("b", Handling::kBegun));
        EXPECT_TRUE(state.Note("b", Handling::kDone));
    }
    FollowState state;
    ASSERT_EQ(state.Open(Folder()), "");
    EXPECT_EQ(state.Get("a").handling, Handling::kBegun);
    EXPECT_EQ(state.Get("a").tries, 2);
    EXPECT_EQ(state.Get("b").handling, Handling::kDone);
}

TEST_F(FollowStateTest, IsForOneAtATime) {
    FollowState first;
    ASSERT_EQ(first.Open(Folder()), "");
    FollowState second;
    EXPECT_NE(second.Open(Folder()), "");
    EXPECT_TRUE(second.IsBusy());
}

TEST_F(FollowStateTest, PassesOverALineThatACrashCutOff) {
    std::filesystem::create_directories(Folder());
    std::ofstream(File()) << "d a\nd b";
    FollowState state;
    ASSERT_EQ(state.Open(Folder()), "");
    EXPECT_EQ(state.Get("a").handling, Handling::kDone);
    EXPECT_EQ(state.Get("b").handling, Handling::kNew);
    ASSERT_TRUE(state.Note("c", Handling::kDone));
    EXPECT_EQ(state.Get("c").handling, Handling::kDone);
}

TEST_F(FollowStateTest, ForgetsWhatIsGoneAndStaysSmall) {
    FollowState state;
    ASSERT_EQ(state.Open(Folder()), "");
    std::filesystem::create_directories(Folder());
    std::string many;
    for (int i = 0; i < 5000; ++i) many += "d gone" + std::to_string(i) + "\n";
    std::ofstream(File()) << many << "b kept\nf kept\nb kept\nf kept\n";
    state.Reload();
    state.KeepOnly({"kept"});
    EXPECT_LT(std::filesystem::file_size(File()), 100U);
    EXPECT_EQ(state.Get("kept").tries, 2);
    EXPECT_EQ(state.Get("kept").handling, Handling::kFailed);
    EXPECT_EQ(state.Get("gone1").handling, Handling::kNew);
}

TEST_F(FollowStateTest, AKeyIsOneLineWhateverTheName) {
    SpoolEntry entry;
    entry.name = "a\nd b";
    const std::string key = MessageKey(entry);
    EXPECT_EQ(key.find('\n'), std::string::npos);
    FollowState state;
    ASSERT_EQ(state.Open(Folder()), "");
    ASSERT_TRUE(state.Note(key, Handling::kDone));
    EXPECT_EQ(state.Get(key).handling, Handling::kDone);
    entry.modified = 1;
    EXPECT_EQ(state.Get(MessageKey(entry)).handling, Handling::kNew);
}

TEST_F(FollowStateTest, PutsAsideWhatCouldNotBeHandled) {
    FollowState state;
    ASSERT_EQ(state.Open(Folder()), "");
    SpoolEntry entry;
    entry.name = "sms_msg1";
    SpoolMessage message;
    message.number = "123";
    message.text = "text";
    ASSERT_TRUE(state.PutAside(entry, message));
    std::ifstream file(state.AsideDirectory() + "/sms_msg1");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(text, "FROM=123\nTIME=\nMSG=text\n");
}

}  // namespace
}  // namespace modemctl

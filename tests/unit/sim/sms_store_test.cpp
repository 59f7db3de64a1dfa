#include "sim/modem/sms_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sim::SmsState;
using sim::SmsStore;
using testing::ElementsAre;

sim::StoredSms Message(SmsState state, const std::string& text = "text") {
    return {state, "+12015550100", "26/03/14,09:15:02+00", text};
}

SmsStore StoreOfBothStates() {
    SmsStore store;
    store.Deliver(Message(SmsState::kUnread));
    store.Deliver(Message(SmsState::kRead));
    return store;
}

TEST(SmsStore, FillsTheLowestFreePlace) {
    SmsStore store;
    EXPECT_EQ(store.Deliver(Message(SmsState::kUnread)), 1);
    EXPECT_EQ(store.Deliver(Message(SmsState::kUnread)), 2);
    EXPECT_TRUE(store.Delete(1, 0));
    EXPECT_EQ(store.Deliver(Message(SmsState::kUnread)), 1);
}

TEST(SmsStore, ListsByState) {
    const SmsStore store = StoreOfBothStates();
    EXPECT_THAT(*store.Matching("REC UNREAD"), ElementsAre(1));
    EXPECT_THAT(*store.Matching("REC READ"), ElementsAre(2));
    EXPECT_THAT(*store.Matching("STO UNSENT"), ElementsAre());
    EXPECT_THAT(*store.Matching("STO SENT"), ElementsAre());
    EXPECT_THAT(*store.Matching("ALL"), ElementsAre(1, 2));
    EXPECT_FALSE(store.Matching("SOME"));
}

struct DeleteCase {
    int flag;
    std::vector<int> left;
};

class SmsDelete : public testing::TestWithParam<DeleteCase> {};

TEST_P(SmsDelete, FlagSaysWhichStatesGo) {
    SmsStore store = StoreOfBothStates();
    EXPECT_TRUE(store.Delete(0, GetParam().flag));
    EXPECT_EQ(*store.Matching("ALL"), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(Flags, SmsDelete,
                         testing::Values(DeleteCase{1, {1}}, DeleteCase{2, {1}}, DeleteCase{3, {1}},
                                         DeleteCase{4, {}}));

TEST(SmsStore, FlagNoughtTakesOneMessageAndMustFindIt) {
    SmsStore store = StoreOfBothStates();
    EXPECT_TRUE(store.Delete(2, 0));
    EXPECT_FALSE(store.Delete(2, 0));
    EXPECT_FALSE(store.Delete(0, 0));
    EXPECT_FALSE(store.Delete(99, 0));
    EXPECT_THAT(*store.Matching("ALL"), ElementsAre(1));
}

TEST(SmsStore, MessagesWaitInTheNetworkWhileItIsFull) {
    SmsStore store;
    store.SetCapacity(1);
    EXPECT_EQ(store.Deliver(Message(SmsState::kUnread, "first")), 1);
    EXPECT_EQ(store.Deliver(Message(SmsState::kUnread, "second")), 0);
    EXPECT_TRUE(store.Full());
    EXPECT_EQ(store.Waiting(), 1u);
    store.MarkRead(1);
    store.Delete(0, 1);
    ASSERT_NE(store.Find(1), nullptr);
    EXPECT_EQ(store.Find(1)->text, "second");
    EXPECT_EQ(store.Waiting(), 0u);
}

}  // namespace

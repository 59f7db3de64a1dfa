// What kind of answer a block holds, and the line that is handed over.
#include <cstring>
#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "modem/at_channel.h"
#include "state/settings.h"

namespace {

class IdentifyMessageTest : public fake::DaemonTest {
  protected:
    int Identify(const std::string& block) {
        line_ = nullptr;
        return IdentifyMessage(block.data(), static_cast<int>(block.size()), &line_);
    }
    char* line_ = nullptr;
};

TEST_F(IdentifyMessageTest, FindsSignalAndIndicatorLines) {
    struct Row {
        const char* block;
        int kind;
        const char* line;
    };
    const Row rows[] = {
        {"\r\n+CSQ: 17,99\r\n\r\nOK\r\n", 2, "+CSQ: 17,99"},
        {"+CSQ: 5,99", 2, "+CSQ: 5,99"},
        {"+CSQ:\r\n", 2, "+CSQ:"},
        {"x +CSQ: 1,2\nOK", 2, "+CSQ: 1,2"},
        {"+CSQ: 1,2\r+CSQ: 3,4\r\n", 2, "+CSQ: 1,2"},
        {"\r\n+CIND: 5,3,1\r\n\r\nOK\r\n", 3, "+CIND: 5,3,1"},
        {"+CIND: 1", 3, "+CIND: 1"},
        {"+CIND: 5,3\r\n+CSQ: 9,99\r\n", 2, "+CSQ: 9,99"},
        {"+CSQ: 9,99\r\n+CIND: 5,3\r\n", 2, "+CSQ: 9,99"},
        {"ERROR\r\n+CSQ: 9,99\r\n", 2, "+CSQ: 9,99"},
        {"+CIND: 4\r\nERROR\r\n", 3, "+CIND: 4"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.block);
        EXPECT_EQ(Identify(row.block), row.kind);
        ASSERT_NE(line_, nullptr);
        EXPECT_STREQ(line_, row.line);
        EXPECT_FALSE(g_b_CsqQueryForm);
    }
}

TEST_F(IdentifyMessageTest, OtherBlocksHoldNothingUsable) {
    for (const char* block : {"", "OK\r\n", "+csq: 1,2", "+CSQ 1,2", "error", "NO CARRIER"}) {
        SCOPED_TRACE(block);
        EXPECT_EQ(Identify(block), 0);
        EXPECT_EQ(line_, nullptr);
        EXPECT_FALSE(g_b_CsqQueryForm);
    }
}

TEST_F(IdentifyMessageTest, AnErrorFlipsTheSignalQueryAndTheNextFlipsItBack) {
    EXPECT_EQ(Identify("\r\nERROR\r\n"), 0);
    EXPECT_TRUE(g_b_CsqQueryForm);
    EXPECT_EQ(Identify("\r\n+CME ERROR: 10\r\n"), 0);
    EXPECT_FALSE(g_b_CsqQueryForm);
    EXPECT_TRUE(world.log.empty());
}

TEST_F(IdentifyMessageTest, SaysWhatItFoundAtANonZeroLevel) {
    for (const int level : {-1, 1, 4}) {
        SCOPED_TRACE(level);
        g_i_DebugLevel = level;
        g_b_CsqQueryForm = false;
        world.log.clear();
        Identify("+CSQ: 1,2\r\n");
        Identify("+CIND: 3\r\n");
        Identify("ERROR");
        Identify("ERROR");
        Identify("OK");
        EXPECT_EQ(world.log, (std::vector<std::string>{
                                 "IdentifyMessage: +CSQ: 1,2",
                                 "IdentifyMessage: +CIND: 3",
                                 "AT command gave an error, switching CSQ modes to AT+CSQ?",
                                 "AT command gave an error, switching CSQ modes to AT+CSQ",
                                 "unknown message command response",
                             }));
    }
}

TEST_F(IdentifyMessageTest, IsSilentWithoutDebug) {
    for (const char* block : {"+CSQ: 1,2", "+CIND: 1", "ERROR", "OK"}) Identify(block);
    EXPECT_TRUE(world.log.empty());
}

TEST_F(IdentifyMessageTest, LeavesTheCallersBlockAlone) {
    std::string block = "+CSQ: 1,2\r\nOK\r\n";
    Identify(block);
    std::strcpy(line_, "changed");
    EXPECT_EQ(block, "+CSQ: 1,2\r\nOK\r\n");
}

TEST_F(IdentifyMessageTest, CountsOnlyTheGivenLength) {
    const char block[] = "OK +CSQ: 1,2";
    EXPECT_EQ(IdentifyMessage(block, 3, &line_), 0);
    EXPECT_EQ(IdentifyMessage(block, 0, &line_), 0);
    EXPECT_EQ(IdentifyMessage(block, -1, &line_), 0);
}

TEST_F(IdentifyMessageTest, OldTextDoesNotShineThrough) {
    Identify(std::string(1000, 'x') + "+CSQ: 1,2");
    EXPECT_EQ(Identify("+CIND: 1"), 3);
    EXPECT_STREQ(line_, "+CIND: 1");
}

TEST_F(IdentifyMessageTest, AFullBlockLeavesRoomBehindItsLine) {
    std::string block(kReadSize, ' ');
    block.replace(block.size() - 7, 7, "+CIND:5");
    EXPECT_EQ(Identify(block), 3);
    EXPECT_STREQ(line_, "+CIND:5");
    std::memset(line_, 'y', 64);  // The sanitizers watch this.
    EXPECT_EQ(Identify("+CSQ: 1,2"), 2);
}

}  // namespace

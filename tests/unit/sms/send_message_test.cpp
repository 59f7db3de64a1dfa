#include "sms/send.h"

#include "sms/spool_fixture.h"
#include "state/settings.h"

using Lines = std::vector<std::string>;

class Transaction : public SpoolTest {
  protected:
    Transaction() {
        world.answers[kCommand] = "\r\n> ";
        world.answers[kBody] = "\r\n+CMGS: 12\r\n\r\nOK\r\n";
    }
};

TEST_F(Transaction, WaitsNotForThePromptAndASecondAfterTheBody) {
    world.answers[kBody] = "";
    EXPECT_TRUE(SendSmSMessage("123", "Hello"));
    // 20 + 50 ms for each command, 50 ms after each read that found something, and the second.
    EXPECT_EQ(world.slept_us, (20000 + 50000 + 50000) + (20000 + 50000 + 1000000));
}

TEST_F(Transaction, CutsATextAt150CharactersAndLogsThat) {
    const std::string text(151, 'x');
    EXPECT_TRUE(SendSmSMessage("123", text));
    EXPECT_EQ(world.log, Lines{"SMS Message too long (151 chars), truncating to 150 chars"});
    EXPECT_EQ(world.heard[2], std::string(150, 'x') + '\x1a');
    world.log.clear();
    EXPECT_TRUE(SendSmSMessage("123", std::string(150, 'x')));
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(Transaction, ShowsTheCommandAndItsLengthAtDebugLevelOne) {
    g_i_DebugLevel = 1;
    SendSmSMessage("123", "Hello");
    ASSERT_GE(world.log.size(), 3u);
    EXPECT_EQ(world.log[0], "DEBUG: SendSmSMessage():  AT+CMGS=\"123\"");
    EXPECT_EQ(world.log[1], "DEBUG: SendSmSMessage():  Length is 13");
    g_i_DebugLevel = -1;
    world.log.clear();
    SendSmSMessage("123", "Hello");
    EXPECT_FALSE(world.LoggedContaining("SendSmSMessage"));
}

TEST_F(Transaction, AnyErrorAtThePromptEndsItBeforeTheBody) {
    for (const char* answer :
         {"\r\nERROR\r\n", "\r\n+CMS ERROR: 500\r\n", "+CME ERROR: 3", "xERRORx"}) {
        SCOPED_TRACE(answer);
        world.answers[kCommand] = answer;
        world.log.clear();
        world.heard.clear();
        EXPECT_FALSE(SendSmSMessage("123", "Hello"));
        EXPECT_EQ(world.log, Lines{"Got ERROR (not CMS error) trying to send SMS to '123'"});
        EXPECT_EQ(world.Commands(), Lines{kCommand});
    }
}

TEST_F(Transaction, AnErrorThatWaitedOnThePortCountsAtThePrompt) {
    world.Waiting("\r\nERROR\r\n");
    EXPECT_FALSE(SendSmSMessage("123", "Hello"));
}

TEST_F(Transaction, ACmsErrorAfterTheBodyIsToldAndTheSentStoreCleared) {
    struct Case {
        const char* answer;
        const char* line;
    };
    for (const Case& c :
         {Case{"\r\n+CMS ERROR: 330\r\n",
               "CMS error #330: SMSC (message service center) address unknown"},
          Case{"+CMS ERROR: 38", "CMS error #38: Network out of order"},
          Case{"\r\n+CMS ERROR: \t 500 \r\n", "CMS error #500: Unknown error"},
          Case{"\r\n+CMS ERROR: 21 rejected\r\n", "CMS error #21: Short message transfer rejected"},
          Case{"\r\n+CMS ERROR: none\r\n", "CMS error #0: Undocumented error"},
          Case{"\r\n+CMS ERROR: \r\n", "CMS error #0: Undocumented error"},
          Case{"\r\n+CMS ERROR: -1\r\n", "CMS error #-1: Undocumented error"},
          Case{"\r\n+CMS ERROR: 513\r\n", "CMS error #513: Undocumented error"},
          Case{"\r\n+CMGS: 4\r\n\r\n+CMS ERROR: 1\r\n",
               "CMS error #1: Unassigned (unallocated) number"}}) {
        SCOPED_TRACE(c.answer);
        world.answers[kBody] = c.answer;
        world.log.clear();
        world.heard.clear();
        EXPECT_FALSE(SendSmSMessage("123", "Hello"));
        EXPECT_EQ(world.log, Lines{c.line});
        EXPECT_EQ(world.Commands().back(), kDeleteSent);
    }
}

TEST_F(Transaction, APlainErrorAfterTheBodyIsNoError) {
    world.answers[kBody] = "\r\nERROR\r\n";
    EXPECT_TRUE(SendSmSMessage("123", "Hello"));
    world.answers[kBody] = "\r\n+CMS ERROR:330\r\n";  // no blank: not the field
    EXPECT_TRUE(SendSmSMessage("123", "Hello"));
}

TEST_F(Transaction, SucceedsWithoutAReferenceAndThenDeletesNothing) {
    for (const char* answer : {"", "\r\nOK\r\n", "\r\n+CMGS: 12", "\r\n+CMGS: x\r\n"}) {
        SCOPED_TRACE(answer);
        world.answers[kBody] = answer;
        world.heard.clear();
        EXPECT_TRUE(SendSmSMessage("123", "Hello"));
        EXPECT_EQ(world.Commands(), (Lines{kCommand, kBody}));
    }
}

TEST_F(Transaction, SeesAReferenceThatCameWithThePrompt) {
    world.answers[kCommand] = "\r\n+CMGS: 7\r\n> ";
    world.answers[kBody] = "";
    EXPECT_TRUE(SendSmSMessage("123", "Hello"));
    EXPECT_EQ(world.Commands().back(), kDeleteSent);
}

TEST_F(Transaction, SendsABodyWithZeroBytesWhole) {
    EXPECT_TRUE(SendSmSMessage("123", std::string("a\0b", 3)));
    EXPECT_EQ(world.heard[2], std::string("a\0b\x1a", 4));
}

// Guards oddity reference-cut.
TEST(SlotNumber, IsTheTextUpToTheLineEndLessOneCharacter) {
    struct Case {
        const char* reply;
        bool found;
        const char* slot;
    };
    for (const Case& c :
         {Case{"\r\n+CMGS: 12\r\n\r\nOK\r\n", true, "12"},
          Case{"+CMGS: 12\n", true, "1"},  // a bare line feed costs a digit
          Case{"+CMGS: 1\n", true, ""}, Case{"+CMGS: \n", true, ""},  // nothing is a number, too
          Case{"+CMGS: \r\n", true, ""}, Case{"+CMGS: -3\r\n", true, "-3"},
          Case{"+CMGS: \t1 2\r\n", true, "12"},  // white space goes
          Case{"+CMGS: 12\r\r\n", true, "12"}, Case{"+CMGS: 12,\"time\"\r\n", false, "old"},
          Case{"+CMGS: 1-2\r\n", false, "old"}, Case{"+CMGS: 12", false, "old"},  // no line end
          Case{"+CMGS:12\r\n", false, "old"},                                     // no blank
          Case{"+CMGS: a\r\n+CMGS: 5\r\n", false, "old"},  // the first counts
          Case{"", false, "old"}}) {
        SCOPED_TRACE(c.reply);
        std::string slot = "old";
        EXPECT_EQ(GetCmsgSlotNum(c.reply, slot), c.found);
        EXPECT_EQ(slot, c.slot);
    }
}

TEST_F(Transaction, TellsHowItFindsTheSlotAtDebugLevelOne) {
    g_i_DebugLevel = 1;
    std::string slot;
    GetCmsgSlotNum("+CMGS: 12\r\n", slot);
    EXPECT_EQ(world.log, (Lines{"DEBUG: GetCmsgSlotNum: found needle '+CMGS: '",
                                "DEBUG: GetCmsgSlotNum: found needle '<cr>'",
                                "DEBUG: GetCmsgSlotNum: found slot number '12'"}));
    g_i_DebugLevel = -1;
    world.log.clear();
    GetCmsgSlotNum("+CMGS: 12\r\n", slot);
    EXPECT_EQ(world.log, Lines{});
}

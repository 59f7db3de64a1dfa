// The daemon's arguments, in any order.
#include "core/command_line.h"

#include <cstring>
#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

using Words = std::vector<const char*>;

class CommandLine : public fake::DaemonTest {
  protected:
    CommandLine() { std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath)); }
    ~CommandLine() override { std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath)); }

    static bool Read(Words words) {
        words.insert(words.begin(), "modemd");
        return ReadArguments(static_cast<int>(words.size()), words.data());
    }
    static std::string Path() {
        return std::string(g_c_PortPath, strnlen(g_c_PortPath, sizeof(g_c_PortPath)));
    }
};

TEST(ProgramName, IsTheTextBehindTheLastSlash) {
    EXPECT_EQ(ProgramNameOf("modemd"), "modemd");
    EXPECT_EQ(ProgramNameOf("/usr/sbin/modemd"), "modemd");
    EXPECT_EQ(ProgramNameOf("./modemd"), "modemd");
    EXPECT_EQ(ProgramNameOf("/m"), "m");
}

TEST(ProgramName, IsTheWholeTextWhenNothingStandsBehindTheSlash) {
    EXPECT_EQ(ProgramNameOf("/usr/bin/"), "/usr/bin/");
    EXPECT_EQ(ProgramNameOf("/"), "/");
    EXPECT_EQ(ProgramNameOf(""), "");
}

TEST_F(CommandLine, BeforeItIsReadTheCardIsGenericAndTheLevelZero) {
    EXPECT_EQ(g_i_CardType, 0);
    EXPECT_EQ(g_i_DebugLevel, 0);
}

TEST_F(CommandLine, EveryCardOptionSetsItsTypeAndSaysSo) {
    struct Row {
        const char* option;
        int card;
        int is_e362;
        int is_mc75i;
        const char* message;
    };
    const Row rows[] = {
        {"-881", 2, 0, 0, "card type set to Sierra 881"},
        {"-E362", 7, 1, 0, "card type set to Novatel E362/USB551L"},
        {"-E371", 8, 0, 0, "card type set to Novatel E371/MC679"},
        {"-USB305", 4, 0, 0, "card type set to Sierra USB 305 Lightning"},
        {"-mc75i", 6, 0, 1, "card type set to Centerion MC75i"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.option);
        g_i_CardType = g_i_IsE362 = g_i_IsMc75i = 0;
        g_i_UseCind1 = 1;
        world.log.clear();
        EXPECT_FALSE(Read({row.option}));
        EXPECT_EQ(g_i_CardType, row.card);
        EXPECT_EQ(g_i_IsE362, row.is_e362);
        EXPECT_EQ(g_i_IsMc75i, row.is_mc75i);
        EXPECT_EQ(g_i_UseCind1, 0);
        EXPECT_EQ(world.log, (std::vector<std::string>{row.message}));
    }
}

// The order of the words decides, not their place in the option.
TEST_F(CommandLine, TheFirstWordOfTheListWins) {
    struct Row {
        const char* option;
        int card;
    };
    const Row rows[] = {
        {"-E362E371", 7}, {"-E371E362", 7}, {"-E371881", 2},    {"-mc75iUSB305", 4}, {"-USB305", 4},
        {"-xx881yy", 2},  {"--E371", 8},    {"-mc75i-E371", 8}, {"-e362", 0},        {"-MC75I", 0},
        {"-Usb305", 0},   {"-xyz", 0},      {"-", 0},           {"-E36", 0},         {"-88 1", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.option);
        g_i_CardType = 0;
        Read({row.option});
        EXPECT_EQ(g_i_CardType, row.card);
    }
}

TEST_F(CommandLine, NoOptionSelectsCardTypeThree) {
    for (const char* option : {"-3", "-881", "-E362", "-E371", "-USB305", "-mc75i", "-cind1"}) {
        Read({option});
        EXPECT_NE(g_i_CardType, 3);
    }
}

TEST_F(CommandLine, AnUnknownOptionIsIgnoredWithoutAMessage) {
    EXPECT_TRUE(Read({"-xyz", "-", "/dev/x"}));
    EXPECT_TRUE(world.log.empty());
    EXPECT_EQ(Path(), "/dev/x");
}

// Every card option takes -cind1 back.
// Guards oddity cind1-behind-the-card.
// Guards oddity querry.
TEST_F(CommandLine, Cind1CountsOnlyBehindTheCard) {
    struct Row {
        Words words;
        int use_cind1;
    };
    const Row rows[] = {
        {{"-cind1", "-E362", "/dev/x"}, 0}, {{"-E362", "-cind1", "/dev/x"}, 1},
        {{"-cind1", "/dev/x"}, 1},          {{"-cind1", "-881", "-cind1"}, 1},
        {{"-E371", "-cind1", "-mc75i"}, 0}, {{"/dev/x", "-xcind1x"}, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.words[0]);
        g_i_UseCind1 = 0;
        Read(row.words);
        EXPECT_EQ(g_i_UseCind1, row.use_cind1);
    }
    EXPECT_TRUE(world.Logged("using querry type cind1"));
}

TEST_F(CommandLine, Cind1IsLookedForBeforeTheCards) {
    Read({"-E362cind1"});
    EXPECT_EQ(g_i_UseCind1, 1);
    EXPECT_EQ(g_i_CardType, 0);
}

TEST_F(CommandLine, EachOptionWhoseSecondCharacterIsDAddsOne) {
    struct Row {
        Words words;
        int level;
    };
    const Row rows[] = {
        {{"-d", "-d", "-d", "/dev/ttyUSB0"}, 3},
        {{"-dd"}, 1},
        {{"-debug"}, 1},
        {{"-dE362"}, 1},
        {{"-D"}, 0},
        {{"-xd"}, 0},
        {{"-d", "/dev/x", "-d"}, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.words[0]);
        g_i_DebugLevel = 0;
        Read(row.words);
        EXPECT_EQ(g_i_DebugLevel, row.level);
        EXPECT_EQ(g_i_CardType, 0);
    }
}

TEST_F(CommandLine, TheLastCardOptionCounts) {
    Read({"-E362", "-E371"});
    EXPECT_EQ(g_i_CardType, 8);
    EXPECT_EQ(g_i_IsE362, 0);
    Read({"-mc75i", "-E362"});
    EXPECT_EQ(g_i_CardType, 7);
    EXPECT_EQ(g_i_IsE362, 1);
    EXPECT_EQ(g_i_IsMc75i, 1);
}

TEST_F(CommandLine, TheFirstWordWithoutADashIsTheDevice) {
    EXPECT_TRUE(Read({"/dev/a", "/dev/b"}));
    EXPECT_EQ(Path(), "/dev/a");
}

TEST_F(CommandLine, OptionsBehindTheDeviceCount) {
    EXPECT_TRUE(Read({"/dev/a", "-E371"}));
    EXPECT_EQ(g_i_CardType, 8);
}

TEST_F(CommandLine, WithoutADeviceItSaysSo) {
    EXPECT_FALSE(Read({}));
    EXPECT_FALSE(Read({"-E362", "-d"}));
    EXPECT_EQ(Path(), "");
}

TEST_F(CommandLine, AnEmptyWordIsADevice) {
    EXPECT_TRUE(Read({"", "/dev/b"}));
    EXPECT_EQ(Path(), "");
}

TEST_F(CommandLine, AnArgumentCountsWithItsFirstEightyCharacters) {
    const std::string path = "/dev/" + std::string(75, 'p');
    for (const std::string& longer : {path, path + "q", path + std::string(5000, 'q')}) {
        std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath));
        EXPECT_TRUE(Read({longer.c_str()}));
        EXPECT_EQ(Path(), path);
    }
    const std::string inside = "-" + std::string(75, 'x') + "E362";
    const std::string outside = "-" + std::string(76, 'x') + "E362";
    Read({outside.c_str()});
    EXPECT_EQ(g_i_CardType, 0);
    Read({inside.c_str()});
    EXPECT_EQ(g_i_CardType, 7);
}

TEST_F(CommandLine, TheUsageNamesTheProgramAndItsOptions) {
    testing::internal::CaptureStderr();
    PrintUsage("modemd");
    const std::string usage = testing::internal::GetCapturedStderr();
    for (const char* word : {"usage: modemd ", "-881", "-E362", "-E371", "-USB305", "-mc75i",
                             "-cind1", "-d", "DEVICE"}) {
        EXPECT_NE(usage.find(word), std::string::npos) << word;
    }
}

}  // namespace

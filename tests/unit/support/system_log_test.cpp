// Which lines are written at which debug level, and with which priority.
#include "support/system_log.h"

#include <syslog.h>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

class SystemLog : public fake::DaemonTest {};

TEST_F(SystemLog, LinesCarryTheNameOfTheProgram) {
    NameLogLines();
#ifdef __GLIBC__
    EXPECT_EQ(world.log_name, "") << "glibc names them by itself";
#else
    EXPECT_EQ(world.log_name, "unit_support");
#endif
}

TEST_F(SystemLog, EveryLineIsANotice) {
    g_i_DebugLevel = 4;
    Log("a %d", 1);
    LogDebug("b %s", "two");
    LogAbove(3, "c");
    EXPECT_EQ(world.log, (std::vector<std::string>{"a 1", "b two", "c"}));
    EXPECT_EQ(world.log_priorities, (std::vector<int>{LOG_NOTICE, LOG_NOTICE, LOG_NOTICE}));
    EXPECT_EQ(LOG_NOTICE, 5);
}

TEST_F(SystemLog, ALineThatIsNoFormatIsWrittenAsItStands) {
    Log("%s", "100% %s %n");
    EXPECT_EQ(world.log.back(), "100% %s %n");
}

// A negative level is "non-zero" but not "above 0".
TEST_F(SystemLog, TheLevelsDifferAtMinusOne) {
    struct Row {
        int level;
        bool debug;
        bool above[4];
    };
    const Row rows[] = {
        {-1, true, {false, false, false, false}}, {0, false, {false, false, false, false}},
        {1, true, {true, false, false, false}},   {2, true, {true, true, false, false}},
        {3, true, {true, true, true, false}},     {4, true, {true, true, true, true}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.level);
        g_i_DebugLevel = row.level;
        EXPECT_EQ(IsDebug(), row.debug);
        world.log.clear();
        LogDebug("debug");
        EXPECT_EQ(world.Logged("debug"), row.debug);
        for (int level = 0; level < 4; ++level) {
            SCOPED_TRACE(level);
            EXPECT_EQ(IsAbove(level), row.above[level]);
            world.log.clear();
            LogAbove(level, "above");
            EXPECT_EQ(world.Logged("above"), row.above[level]);
        }
    }
}

TEST_F(SystemLog, LogSpeaksAtEveryLevel) {
    for (const int level : {-1, 0, 1, 4}) {
        g_i_DebugLevel = level;
        Log("always");
    }
    EXPECT_EQ(world.CountLogged("always"), 4);
}

}  // namespace

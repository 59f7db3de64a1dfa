// Which characters an access point name may have. The files themselves are read in the scenarios.
#include "core/config_files.h"

#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

class ApnFormat : public fake::DaemonTest {};

TEST_F(ApnFormat, LowerCaseLettersDigitsAndFourMarksAreValid) {
    const std::string allowed = "abcdefghijklmnopqrstuvwxyz0123456789.-_!";
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        const std::string apn = std::string("a") + static_cast<char>(value) + "z";
        const bool valid =
            value != 0 && allowed.find(static_cast<char>(value)) != std::string::npos;
        EXPECT_EQ(ApnIsValidFormat(apn), valid ? 1 : 0);
    }
}

TEST_F(ApnFormat, KnowsGoodFromBad) {
    for (const char* apn : {"internet", "my.apn", "a", "!", "apn-1_2.three"})
        EXPECT_EQ(ApnIsValidFormat(apn), 1) << apn;
    for (const char* apn : {"", "internet#1", "my apn", "Internet", "a,b", "a\"b"})
        EXPECT_EQ(ApnIsValidFormat(apn), 0) << apn;
}

TEST_F(ApnFormat, LengthIsNotItsBusiness) {
    EXPECT_EQ(ApnIsValidFormat(std::string(1000, 'a')), 1);
}

TEST_F(ApnFormat, IsSilentAtLevelZero) {
    ApnIsValidFormat("ok");
    ApnIsValidFormat("BAD");
    EXPECT_TRUE(world.log.empty());
}

TEST_F(ApnFormat, TellsItsVerdictAtANonZeroLevel) {
    for (const int level : {-1, 1, 2}) {
        SCOPED_TRACE(level);
        g_i_DebugLevel = level;
        world.log.clear();
        ApnIsValidFormat("ok");
        ApnIsValidFormat("b#d");
        ApnIsValidFormat("");
        EXPECT_EQ(world.log, (std::vector<std::string>{
                                 "DEBUG: ApnIsValidFormat(): Checking for bad characters in 'ok'",
                                 "DEBUG: ApnIsValidFormat(): APN has valid chars",
                                 "DEBUG: ApnIsValidFormat(): Checking for bad characters in 'b#d'",
                                 "DEBUG: ApnIsValidFormat(): Error: Bad APN",
                             }));
    }
}

TEST_F(ApnFormat, TracesEachComparisonFromLevelThreeOn) {
    g_i_DebugLevel = 3;
    ApnIsValidFormat("ca");
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "DEBUG: ApnIsValidFormat(): Checking for bad characters in 'ca'",
                             "DEBUG: ApnIsValidFormat(): Checking if 'c' = 'a'",
                             "DEBUG: ApnIsValidFormat(): Checking if 'c' = 'b'",
                             "DEBUG: ApnIsValidFormat(): Checking if 'c' = 'c'",
                             "DEBUG: ApnIsValidFormat(): Checking if 'a' = 'a'",
                             "DEBUG: ApnIsValidFormat(): APN has valid chars",
                         }));
    world.log.clear();
    ApnIsValidFormat("#a");
    EXPECT_EQ(world.log.size(), 42u);  // the question, 40 comparisons, the verdict
    EXPECT_EQ(world.log.back(), "DEBUG: ApnIsValidFormat(): Error: Bad APN");
}

}  // namespace

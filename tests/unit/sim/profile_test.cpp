#include "sim/modem/profile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "bench_modem.h"
#include "machine/own_folder.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// A folder of profiles of the test's own.
class Profiles : public testing::Test {
  protected:
    ~Profiles() override {
        for (const std::string& path : written_) unlink(path.c_str());
        rmdir(folder_.c_str());
    }

    std::string Write(const std::string& name, const std::string& text) {
        const std::string path = folder_ + "/" + name + ".profile";
        std::ofstream(path) << text;
        written_.push_back(path);
        return path;
    }

    std::string ErrorOf(const std::string& text) {
        try {
            sim::LoadProfile(Write("bad", text));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "loaded without an error";
    }

  private:
    const std::string folder_ = machine::MakeOwnFolder();
    std::vector<std::string> written_;
};

TEST_F(Profiles, HoldSettingsContextsAnswersAndADrive) {
    const sim::Profile profile = sim::LoadProfile(Write("mine",
                                                        "# a comment\n"
                                                        "imei = 001017000000003\n"
                                                        "context 2 IPV6 \"my apn\"\n"
                                                        "at 0s signal 20\n"
                                                        "at 1m signal 3\n"
                                                        "> AT!X?\n"
                                                        "delay 300ms\n"
                                                        "< a\\tb {imei}\n"
                                                        "< OK\n"));
    EXPECT_EQ(profile.name, "mine");
    EXPECT_EQ(profile.settings.at("imei"), "001017000000003");
    EXPECT_EQ(profile.contexts.at(2).apn, "my apn");
    ASSERT_EQ(profile.drive.size(), 2u);
    EXPECT_EQ(profile.drive[1].at, 60 * sim::kSecond);
    EXPECT_EQ(profile.drive[1].control, "signal 3");
    const sim::ScriptedAnswer& answer = profile.answers.at("AT!X?").at(0);
    EXPECT_EQ(answer.delay, 300 * sim::kMillisecond);
    EXPECT_THAT(answer.lines, testing::ElementsAre("a\tb {imei}"));
    EXPECT_EQ(answer.result, "OK");
}

TEST_F(Profiles, AnIncludedAnswerIsReplacedNotExtended) {
    Write("ground", "name = first\n> AT!A\n< from ground\n< OK\n> AT!B\n< kept\n< OK\n");
    const std::string path =
        Write("upper", "include ground\nname = second\n> at!a\n< {name}\n< OK\n");
    BenchModem modem(path);
    EXPECT_EQ(modem.Ask("AT!A"), Answered("second"));
    EXPECT_EQ(modem.Ask("AT!B"), Answered("kept"));
}

TEST_F(Profiles, TheFirstAnswerWhoseConditionHoldsIsGiven) {
    BenchModem modem(Write("mine",
                           "colour = red\n"
                           "> AT!C\nwhen colour=blue\n< sky\n< OK\n"
                           "> AT!C\nwhen colour=red\n< rose\n< OK\n"
                           "> AT!C\n< other\n< OK\n"));
    EXPECT_EQ(modem.Ask("AT!C"), Answered("rose"));
    modem.Tell("set colour blue");
    EXPECT_EQ(modem.Ask("AT!C"), Answered("sky"));
    modem.Tell("set colour green");
    EXPECT_EQ(modem.Ask("AT!C"), Answered("other"));
}

TEST_F(Profiles, ALineThatNamesAnEmptyValueIsLeftOut) {
    BenchModem modem(Write("mine", "empty =\n> AT!D\n< one\n< two {empty}\n< three\n< OK\n"));
    EXPECT_EQ(modem.Ask("AT!D"), Answered("one\r\nthree"));
}

TEST_F(Profiles, APatternTakesWhateverFollows) {
    BenchModem modem(Write("mine", "> AT!E=*\n< taken\n< OK\n> AT!E=1\n< one\n< OK\n"));
    EXPECT_EQ(modem.Ask("at!e=77"), Answered("taken"));
    EXPECT_EQ(modem.Ask("at!e=1"), Answered("one"));
}

TEST_F(Profiles, AnAnswerMayEndInSilence) {
    BenchModem modem(Write("mine", "> AT!F\n< last words\n"));
    EXPECT_EQ(modem.Ask("AT!F"), "\r\nlast words\r\n");
}

TEST_F(Profiles, BadDataIsReportedWithItsPlace) {
    EXPECT_THAT(ErrorOf("\nnonsense\n"), EndsWith("bad.profile:2: not understood: nonsense"));
    EXPECT_THAT(ErrorOf("< OK\n"), EndsWith(":1: there is no command above this line"));
    EXPECT_THAT(ErrorOf("> AT\n< OK\n< more\n"), EndsWith(":3: a line behind the final result"));
    EXPECT_THAT(ErrorOf("> AT\ndelay soon\n"), EndsWith(":2: not a duration: soon"));
    EXPECT_THAT(ErrorOf("> AT\n< {nobody}\n"), EndsWith(":2: unknown value nobody"));
    EXPECT_THAT(ErrorOf("> AT\n< {csq\n"), EndsWith(":2: a brace is left open"));
    EXPECT_THAT(ErrorOf("> AT\nwhen weather=bad\n"), EndsWith(":2: unknown value weather"));
    EXPECT_THAT(ErrorOf("csq = 4\n"), HasSubstr("live value"));
    EXPECT_THAT(ErrorOf("context 17 IP x\n"), EndsWith(":1: context number must be 1 to 16"));
    EXPECT_THAT(ErrorOf("at 5s signal 1\nat 4s signal 2\n"),
                HasSubstr(":2: steps must be in order"));
    EXPECT_THAT(ErrorOf("at 0s repeat\n"), HasSubstr(":1: "));
    EXPECT_THAT(ErrorOf("include ../elsewhere\n"), HasSubstr(":1: include needs"));
    EXPECT_THAT(ErrorOf(std::string(5000, 'x')), EndsWith(":1: line is too long"));
}

TEST_F(Profiles, AnIncludeOfItselfEnds) {
    EXPECT_THAT(ErrorOf("include bad\n"), EndsWith(":1: too many includes, one in the other"));
}

TEST(LoadProfile, NamesAFileThatIsMissing) {
    EXPECT_THROW(sim::LoadProfile("no_such_model"), std::runtime_error);
    EXPECT_THROW(sim::LoadProfile("/nonexistent/x.profile"), std::runtime_error);
}

}  // namespace

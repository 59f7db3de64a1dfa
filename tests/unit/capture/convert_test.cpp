#include "capture/convert.h"

#include "field_log.h"
#include "sim/modem/modem.h"

namespace capture {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string kEnd = std::string(kHead) + "Sending command: AT\n";

TEST(Convert, NeedsTheBytes) {
    const Result quiet = ConvertLog(std::string(kHead) + "Sending command: AT+CSQ\n" + kEnd);
    EXPECT_THAT(quiet.text, IsEmpty());
    EXPECT_THAT(quiet.complaints.back(), HasSubstr("debug level 4"));
    const Result none = ConvertLog("Mar 14 09:15:00 router cron[3]: hello\n");
    EXPECT_THAT(none.text, IsEmpty());
    EXPECT_THAT(none.complaints.back(), HasSubstr("no command"));
}

TEST(Convert, KnowsTheCardByWhatItIsAsked) {
    const auto arguments = [](const std::string& command) {
        return ArgumentsFor({{"AT+CSQ", {}}, {command, {}}});
    };
    EXPECT_EQ(arguments("AT$NWSYSMODE"), "E362");
    EXPECT_EQ(arguments("AT$NWRAT?"), "E371");
    EXPECT_EQ(arguments("at!gstatus?"), "881");
    EXPECT_EQ(arguments("AT!GETRAT?"), "USB305");
    EXPECT_EQ(arguments("AT^SCID"), "mc75i");
    EXPECT_EQ(arguments("AT+CIND?"), "generic -cind1");
}

TEST(Convert, TellsWhenItBegan) {
    EXPECT_THAT(ConvertLog(Asked("AT", "OK") + kEnd).text,
                HasSubstr("began 2026-03-14 09:15:00\n"));
}

TEST(Convert, TwoCapturesCannotBeCompared) {
    Request request;
    request.now = kNow;
    request.key = {1, 2};
    const std::string log = Asked("at+gsn", "\r\n001017088100014\r\n") + kEnd;
    const std::string one = Convert(log, request).text;
    EXPECT_EQ(Convert(log, request).text, one);
    request.key = {3, 4};
    EXPECT_NE(Convert(log, request).text, one);
}

// A profile that the simulated modem takes, and that answers as the captured one did.
TEST(Convert, WritesAProfile) {
    Story story;
    story.arguments = "881";
    story.exchanges = {
        {"AT!GETBAND?", {{25 * kMillisecond, "AT!GETBAND?\r\r\nERROR\r\n"}}},
        {"AT!GETBAND?", {{40 * kMillisecond, "\r\n!GETBAND: LTE B4\r\n\r\nOK\r\n"}}},
        {"AT+CMGS=\"1555\"", {{25 * kMillisecond, "\r\n> "}}},
        {"AT+TEMP", {{25 * kMillisecond, "\r\n{odd}\r\n\r\nOK\r\n"}}},
    };
    const std::string profile = WriteProfile(story);
    EXPECT_THAT(profile, AllOf(HasSubstr("include 881\n"),
                               HasSubstr("> AT!GETBAND?\ndelay 40ms\n< !GETBAND: LTE B4\n< OK\n")));
    EXPECT_THAT(profile, AllOf(Not(HasSubstr("CMGS")), Not(HasSubstr("odd"))));

    const std::string path = testing::TempDir() + "capture_convert_test.profile";
    std::FILE* const file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs(profile.c_str(), file);
    std::fclose(file);
    sim::Modem modem(sim::LoadProfile(path));
    std::remove(path.c_str());
    modem.Receive("AT!GETBAND?\r", 0);
    EXPECT_THAT(modem.Transmit(sim::kMillisecond * 1000), HasSubstr("!GETBAND: LTE B4\r\n"));
}

}  // namespace
}  // namespace capture

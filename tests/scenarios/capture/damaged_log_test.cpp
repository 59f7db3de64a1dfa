// Logs as they really arrive: wrapped, cut off, with holes.
#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "captured_life.h"

using testing::Each;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::Le;
using testing::Lt;
using testing::SizeIs;

namespace {

constexpr std::size_t kLimit = 1024;  // bytes of a line, as many loggers have it

std::vector<std::string> LinesOf(const std::string& log) {
    std::vector<std::string> lines;
    std::istringstream text(log);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

std::string Joined(const std::vector<std::string>& lines, std::size_t from, std::size_t to) {
    std::string log;
    for (std::size_t i = from; i < to; ++i) log += lines[i] + "\n";
    return log;
}

std::string Wrapped(const std::string& log) {
    std::string wrapped;
    for (const std::string& line : LinesOf(log)) {
        for (std::size_t at = 0; at < line.size(); at += kLimit) {
            wrapped += line.substr(at, kLimit) + "\n";
        }
    }
    return wrapped;
}

std::string CutOff(const std::string& log) {
    std::string cut;
    for (const std::string& line : LinesOf(log)) cut += line.substr(0, kLimit) + "\n";
    return cut;
}

const Life& DriveOfThe881() {
    static const Life life = Live("-881", LogForm::kRsyslog, DriveWithMessages);
    return life;
}

// Plays to its end, and the daemon publishes what belongs to the card. Returns the strays.
std::set<std::string> Play(const std::string& log) {
    const capture::Story story = capture::ReadStory(Converted(log));
    EXPECT_EQ(story.arguments, "881");
    Life replayed = LiveAgain(story.Lives().back());
    std::vector<std::string>& texts = replayed.published["/var/log/wireless.cardstats"];
    EXPECT_THAT(texts, SizeIs(Gt(40U)));
    if (texts.empty()) return {};
    EXPECT_THAT(texts.back(),
                testing::AllOf(HasSubstr("CELLMODEM_MODEL=Model 881\n"),
                               testing::ContainsRegex("CELLMODEM_CURRENT_CSQ=[0-9]+\n")));
    return {replayed.strays.begin(), replayed.strays.end()};
}

}  // namespace

TEST(DamagedLog, WrappedLinesAreWhole) {
    Life lived = DriveOfThe881();
    lived.log = Wrapped(lived.log);
    ExpectRoundTrip(lived);
}

// The status page of the modem is longer than the line; its text is in the line before the dump.
// The list of operators is too long for that, too.
TEST(DamagedLog, CutLinesAreCompletedOrLeftOut) {
    const std::string log = CutOff(DriveOfThe881().log);
    ASSERT_THAT(LinesOf(log), Each(SizeIs(Le(kLimit))));
    EXPECT_THAT(Play(log), ElementsAre("AT+COPN"));
}

// The hour of a log that was kept: neither start nor end.
TEST(DamagedLog, AMiddleIsEnough) {
    const std::vector<std::string> lines = LinesOf(DriveOfThe881().log);
    const std::string log = Joined(lines, 777, lines.size() - 1234);
    const capture::Story story = capture::ReadStory(Converted(log));
    EXPECT_THAT(story.exchanges.size(),
                Lt(capture::ReadStory(Converted(DriveOfThe881().log)).exchanges.size()));
    EXPECT_FALSE(story.exchanges.front().IsStart());
}

TEST(DamagedLog, AHoleIsPassedOver) {
    const std::vector<std::string> lines = LinesOf(DriveOfThe881().log);
    const std::size_t hole = lines.size() / 2;
    const std::string log = Joined(lines, 0, hole) +
                            "2026-03-14T09:21:00.000000+00:00 router rsyslogd: imuxsock lost 120 "
                            "messages from pid 4242 due to rate-limiting\n" +
                            Joined(lines, hole + 120, lines.size());
    EXPECT_THAT(Converted(log), HasSubstr("\nlost\n"));
    Play(log);
}

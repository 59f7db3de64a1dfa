#include "sim/modem/dialogue.h"

#include <gtest/gtest.h>

namespace {

using sim::LineReader;
using Event = sim::LineReader::Event;

// Feeds all bytes; returns the last event that was not kNothing.
Event Feed(LineReader* reader, std::string_view bytes, std::string* echo) {
    Event last = Event::kNothing;
    for (const char byte : bytes) {
        const Event event = reader->Take(byte, echo);
        if (event != Event::kNothing) last = event;
    }
    return last;
}

TEST(LineReader, EndsALineAtCarriageReturnAndDropsTheLineFeed) {
    LineReader reader;
    std::string echo;
    EXPECT_EQ(Feed(&reader, "AT+CSQ\r", &echo), Event::kLine);
    EXPECT_EQ(reader.Text(), "AT+CSQ");
    EXPECT_EQ(Feed(&reader, "\nAT\r", &echo), Event::kLine);
    EXPECT_EQ(reader.Text(), "AT");
    EXPECT_EQ(echo, "AT+CSQ\rAT\r");
}

TEST(LineReader, DropsNulPadding) {
    LineReader reader;
    std::string echo;
    EXPECT_EQ(Feed(&reader, std::string("AT\0\0\0+CSQ\0\0\r", 12), &echo), Event::kLine);
    EXPECT_EQ(reader.Text(), "AT+CSQ");
    EXPECT_EQ(echo, "AT+CSQ\r");
}

TEST(LineReader, BackspaceTakesACharacterBack) {
    LineReader reader;
    std::string echo;
    Feed(&reader, "\b\bATX\b+CSQ\r", &echo);
    EXPECT_EQ(reader.Text(), "AT+CSQ");
}

TEST(LineReader, KeepsOnlyTheStartOfAnEndlessLine) {
    LineReader reader;
    std::string echo;
    EXPECT_EQ(Feed(&reader, std::string(200000, 'A') + "\r", &echo), Event::kLine);
    EXPECT_EQ(reader.Text().size(), 2048u);
}

TEST(LineReader, ABodyEndsAtCtrlZAndKeepsItsLines) {
    LineReader reader;
    std::string echo;
    Feed(&reader, "AT+CMGS=\"1\"\r", &echo);
    reader.ExpectBody();
    EXPECT_EQ(Feed(&reader, "\none\rtwo\x1a", &echo), Event::kBody);
    EXPECT_EQ(reader.Text(), "one\ntwo");
    EXPECT_FALSE(reader.InBody());
}

TEST(LineReader, EscapeGivesABodyUp) {
    LineReader reader;
    std::string echo;
    reader.ExpectBody();
    EXPECT_EQ(Feed(&reader, "half\x1b", &echo), Event::kCancelled);
    EXPECT_EQ(Feed(&reader, "AT\r", &echo), Event::kLine);
    EXPECT_EQ(reader.Text(), "AT");
}

TEST(Frame, PutsLineEndsAroundInformationAndResult) {
    const sim::Modes modes;
    EXPECT_EQ(sim::Frame(sim::Info("+CSQ: 17,99"), modes), "\r\n+CSQ: 17,99\r\n\r\nOK\r\n");
    EXPECT_EQ(sim::Frame(sim::Ok(), modes), "\r\nOK\r\n");
}

TEST(Frame, EquipmentErrorsFollowTheErrorMode) {
    sim::Modes modes;
    EXPECT_EQ(sim::Frame(sim::CmeError(10), modes), "\r\nERROR\r\n");
    modes.cmee = 1;
    EXPECT_EQ(sim::Frame(sim::CmeError(10), modes), "\r\n+CME ERROR: 10\r\n");
    modes.cmee = 2;
    EXPECT_EQ(sim::Frame(sim::CmeError(10), modes), "\r\n+CME ERROR: SIM not inserted\r\n");
}

TEST(Frame, MessageErrorsAreAlwaysNumbers) {
    const sim::Modes modes;
    EXPECT_EQ(sim::Frame(sim::CmsError(330), modes), "\r\n+CMS ERROR: 330\r\n");
}

}  // namespace

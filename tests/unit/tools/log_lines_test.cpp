#include "modemctl/log_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "state/cards.h"

namespace modemctl {
namespace {

std::string SourceOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The text of string literals that stand behind each other, as the compiler joins them.
std::string Joined(const std::string& literals) {
    std::string text;
    bool inside = false;
    for (std::size_t i = 0; i < literals.size(); ++i) {
        if (literals[i] == '"') {
            inside = !inside;
        } else if (inside) {
            if (literals[i] == '\\') ++i;
            text += literals[i];
        }
    }
    return text;
}

// Every format that the daemon's source hands to Log().
std::set<std::string> DaemonFormats() {
    const std::regex call(R"(\bLog\(\s*((?:"(?:[^"\\]|\\.)*"\s*)+))");
    std::set<std::string> formats;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(DAEMON_SOURCE)) {
        if (entry.path().extension() != ".cpp") continue;
        const std::string source = SourceOf(entry.path());
        for (std::sregex_iterator i(source.begin(), source.end(), call), end; i != end; ++i) {
            formats.insert(Joined((*i)[1].str()));
        }
    }
    return formats;
}

// What printf might have made of a format: each conversion has some text, and no text is special.
std::string Sample(const std::string& format) {
    return std::regex_replace(format, std::regex("%[0-9.]*l?([sdufc])"), "7x");
}

// Lines whose words come from elsewhere; their texts are in the tests below.
const std::set<std::string> kPassedOn = {"%s"};

TEST(LogLines, HaveAnEntryForEachThatTheDaemonCanWrite) {
    const std::set<std::string> formats = DaemonFormats();
    ASSERT_GT(formats.size(), 60U);
    for (const std::string& format : formats) {
        if (kPassedOn.count(format) > 0) continue;
        const LogMatch match = MatchLogLine(Sample(format));
        EXPECT_NE(match.line, nullptr) << "no entry for: " << format;
        if (match.line == nullptr) continue;
        // A line of level 0 has one of its own; those of the debug levels share some.
        if (match.line->topic == LogTopic::kDebug) continue;
        EXPECT_STREQ(match.line->format, format.c_str());
    }
}

// The other direction: an entry that no source line stands behind is a line that has changed.
TEST(LogLines, HaveNoEntryThatTheDaemonDoesNotWrite) {
    const std::set<std::string> formats = DaemonFormats();
    for (const LogLine& line : AllLogLines()) {
        if (line.topic == LogTopic::kDebug || formats.count(line.format) > 0) continue;
        // The words of a passed-on line, or a case of a line that says more with known words.
        const std::string text = line.format;
        const bool special =
            std::any_of(formats.begin(), formats.end(), [&](const std::string& format) {
                std::vector<std::string> parts;
                return kPassedOn.count(format) == 0 && MatchesFormat(format.c_str(), text, parts);
            });
        const bool passed_on = text == "CMS error #%d: %s";
        EXPECT_TRUE(special || passed_on) << "the daemon does not write: " << text;
    }
}

TEST(LogLines, NameEachCardByItsRightName) {
    for (const cards::Model& model : cards::kModels) {
        const LogMatch match = MatchLogLine(std::string("card type set to ") + model.logged_as);
        if (!cards::HasOption(model)) continue;
        ASSERT_NE(match.line, nullptr) << model.name;
        EXPECT_EQ(match.Plain().find(std::string("started for a ") + model.title), 0U)
            << match.Plain();
    }
}

TEST(LogLines, ExplainEveryEndOfACallAndEveryMessageError) {
    EXPECT_NE(MatchLogLine("CMS error #38: Network out of order").line, nullptr);
    EXPECT_EQ(MatchLogLine("CMS error #38: Network out of order").Plain(),
              "the message failed: Network out of order (38)");
    EXPECT_NE(MatchLogLine("Last connect end reason was '11'").line, nullptr);
}

TEST(LogLines, AreMatchedByTheEntryThatSaysMost) {
    EXPECT_EQ(MatchLogLine("Last qmi result was 'Data call failed. (14)'").Plain(),
              "the modem could not set the call up");
    EXPECT_EQ(MatchLogLine("Last qmi result was '30'").Plain(), "result: 30");
    EXPECT_EQ(MatchLogLine("DEBUG_MODE set to 2").Plain(), "DEBUG_MODE is 2");
}

// Foreign text stands where the %s is, and may look like anything.
TEST(LogLines, ReadForeignTextAsWhatItIs) {
    const LogMatch match = MatchLogLine("Got SMS from 1555 at 26/03/14, Message: exit\n%s {1}\n");
    ASSERT_NE(match.line, nullptr);
    EXPECT_EQ(match.Plain(), "message from 1555: exit\n%s {1}\n");
    EXPECT_EQ(MatchLogLine("exit and more").line, nullptr);
    EXPECT_EQ(MatchLogLine("").line, nullptr);
}

}  // namespace
}  // namespace modemctl

#include "published.h"

#include <gmock/gmock.h>

#include <ctime>
#include <map>
#include <sstream>

namespace {

constexpr std::time_t kStart = 1773479700;  // 2026-03-14 09:15:00 UTC

std::string KeyOf(const std::string& line) {
    return line.substr(0, line.find('='));
}

std::string FirstLineAt(std::time_t time) {
    char text[64];
    std::strftime(text, sizeof(text), "#File generated %Y-%m-%d %H:%M:%S ", std::gmtime(&time));
    return text;
}

}  // namespace

std::string Answered(const Lines& lines) {
    if (lines == Lines{"ERROR"}) return "\r\nERROR\r\n";
    std::string answer = "\r\n";
    for (const std::string& line : lines) answer += line + "\r\n";
    return answer + "\r\nOK\r\n";
}

void Teach(rig::World& world, const std::vector<Reply>& replies) {
    for (const Reply& reply : replies) world.modem.Answer(reply.command, Answered(reply.lines));
}

std::string With(const std::string& text, const Changes& changes) {
    std::map<std::string, std::string> by_key;
    for (const std::string& change : changes) by_key[KeyOf(change)] = change;
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line, '\n');) {
        const auto change = by_key.find(KeyOf(line));
        if (change == by_key.end()) {
            result += line + "\n";
        } else if (change->second.find('=') != std::string::npos) {
            result += change->second + "\n";
        }
    }
    return result;
}

void ExpectStatistics(const rig::FileVersion& version, const std::string& text) {
    const auto end = version.text.find('\n');
    ASSERT_NE(std::string::npos, end);
    EXPECT_EQ(text, version.text.substr(end + 1));
    // The time is taken first, then the ICCID is asked for, which takes a second or so.
    const std::time_t written = kStart + static_cast<std::time_t>(version.at / 1000000);
    EXPECT_THAT(
        version.text.substr(0, end),
        testing::AnyOf(FirstLineAt(written), FirstLineAt(written - 1), FirstLineAt(written - 2)));
}

void ExpectStatistics(const rig::World& world, const std::string& text) {
    const auto versions = world.trace.Versions(kStatistics);
    ASSERT_FALSE(versions.empty());
    ExpectStatistics(versions.back(), text);
}

// One start-up and one pass, line for line, at every debug level.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::World;
using Lines = std::vector<std::string>;

enum When { kAlways, kDebug, kAboveOne, kAboveThree };

bool Speaks(When when, int level) {
    switch (when) {
        case kAlways:
            return true;
        case kDebug:
            return level != 0;
        case kAboveOne:
            return level > 1;
        case kAboveThree:
            return level > 3;
    }
    return false;
}

struct Line {
    When when;
    const char* text;
};

// A generic modem that answers "OK" to all but the signal query. Reads of the start-up that throw
// their bytes away are dumped, too.
const Line kLines[] = {
    {kDebug, "Sending command: AT"},
    {kAboveThree, "Clear Response: OK\r\n"},
    {kAboveThree, "Raw Response: 4f 4b 0d 0a "},
    {kDebug, "Sending command: AT+CREG=2"},
    {kAboveThree, "Clear Response: OK\r\n"},
    {kAboveThree, "Raw Response: 4f 4b 0d 0a "},
    {kDebug, "read 4 bytes from port"},
    {kAboveOne, "DEBUG: returning string class : OK\r\n"},
    {kAlways, "Modem does not support CMGF SMS"},
    {kDebug, "Sending command: at+gsn"},
    {kAboveThree, "Clear Response: OK\r\n"},
    {kAboveThree, "Raw Response: 4f 4b 0d 0a "},
    {kDebug, "read 4 bytes from port"},
    {kAboveOne, "DEBUG: returning string class : OK\r\n"},
    {kAboveOne, "DEBUG: token count is : 2"},
    {kAboveOne, "DEBUG: checking line : OK\r"},
    {kAboveOne, "DEBUG: checking line : "},
    {kDebug, "Sending command: AT+CGDCONT?"},
    {kAboveThree, "Clear Response: OK\r\n"},
    {kAboveThree, "Raw Response: 4f 4b 0d 0a "},
    {kDebug, "read 4 bytes from port"},
    {kAboveOne, "DEBUG: returning string class : OK\r\n"},
    {kAboveOne, "DEBUG: token count is : 2"},
    {kAboveOne, "DEBUG: checking line : OK\r"},
    {kAboveOne, "DEBUG: checking line : "},
    {kAboveOne, "running DumpAllCardInfo"},
    {kAboveOne, "writing Device Properties to /var/log/wireless.cardstats"},
    {kAboveOne, "DEBUG: APN token count is 0"},
    // The first pass.
    {kDebug, "Sending command: AT+CSQ"},
    {kAboveThree, "Clear Response: +CSQ: 17,99\r\n"},
    {kAboveThree, "Raw Response: 2b 43 53 51 3a 20 31 37 2c 39 39 0d 0a "},
    {kAboveOne, "Massaged packet : 2b 43 53 51 3a 20 31 37 2c 39 39 0d 0a "},
    {kDebug, "IdentifyMessage: +CSQ: 17,99"},
    {kAboveOne, "UpdateLightbar: +CSQ: 17,99 into /var/log/lightbar"},
    {kDebug, "Sending command: AT+CGDCONT?"},
    {kAboveThree, "Clear Response: OK\r\n"},
    {kAboveThree, "Raw Response: 4f 4b 0d 0a "},
    {kDebug, "read 4 bytes from port"},
    {kAboveOne, "DEBUG: returning string class : OK\r\n"},
    {kAboveOne, "DEBUG: token count is : 2"},
    {kAboveOne, "DEBUG: checking line : OK\r"},
    {kAboveOne, "DEBUG: checking line : "},
    {kAboveOne, "running DumpAllCardInfo"},
    {kAboveOne, "writing Device Properties to /var/log/wireless.cardstats"},
    {kAboveOne, "DEBUG: APN token count is 0"},
    {kAlways, "Cannot sync to tower time, unsupported modem"},
    {kDebug, "Uptime current: 3605.760000, uptime cutoff is 600"},
    {kDebug, "Uptime > 600, checking PPP errors"},
    {kAboveOne, "DEBUG: Read in 0 PPP Wireless errors from file /var/log/kvtinit.status"},
    // The second one has begun.
    {kDebug, "Sending command: AT+CSQ"},
};

class LogLevel : public testing::TestWithParam<int> {};

TEST_P(LogLevel, SaysExactlyTheseLines) {
    const int level = GetParam();
    World world;
    world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf",
                      "DEBUG_MODE=" + std::to_string(level) + "\nSYNC_TIME=yes\n");
    world.modem.Script([](const std::string& command) {
        return std::string(command == "AT+CSQ" ? "+CSQ: 17,99\r\n" : "OK\r\n");
    });
    world.Start();
    world.RunFor(6s);

    Lines expected = {
        "v1.45 starting",
        "Writing pid 4242 to pidfile '/var/run/modemd.pid'",
        "file /etc/ssh/ssh_host_dsa_key is present",
        "uptime cutoff set to 600 seconds",
        "DEBUG_MODE set to " + std::to_string(level),
        "SYNC_TIME config option is YES.  Time sync will attempt every 4 hours",
    };
    for (const Line& line : kLines) {
        if (Speaks(line.when, level)) expected.push_back(line.text);
    }
    EXPECT_EQ(world.trace.Log(), expected);
    for (const rig::Event& event : world.trace.Of(rig::Kind::kLog)) {
        EXPECT_EQ(event.number, 5) << event.text;  // LOG_NOTICE
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, LogLevel, testing::Values(-1, 0, 1, 2, 3, 4),
                         [](const testing::TestParamInfo<int>& test) {
                             return test.param < 0 ? std::string("minus_one")
                                                   : std::to_string(test.param);
                         });

}  // namespace

// A modem that answers strangely, one query at a time: silence, ERROR, its own echo, half a line,
// noise, a flood, or too late. The daemon goes on, its files keep their form, and when the modem
// has come to its senses they are as they were.
#include <gmock/gmock.h>

#include <random>

#include "published.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

struct Strangeness {
    const char* name;
    // The strange answer to the command, in place of the usual one.
    std::string (*answer)(const std::string& command, const std::string& usual);
    rig::Duration delay = 5ms;
};

std::string NoAnswer(const std::string&, const std::string&) {
    return "";
}

std::string Error(const std::string&, const std::string&) {
    return "\r\nERROR\r\n";
}

std::string Echo(const std::string& command, const std::string&) {
    return command + "\r";
}

std::string Half(const std::string&, const std::string& usual) {
    return usual.substr(0, usual.size() / 2);
}

std::string Noise(const std::string& command, const std::string&) {
    std::mt19937_64 random(rig::Seed() + command.size());
    std::string noise;
    for (int i = 0; i < 300; ++i) noise += static_cast<char>(random() & 0xFF);
    return noise;
}

std::string Flood(const std::string&, const std::string& usual) {
    std::string flood;
    while (flood.size() < 131072 + 500) flood += usual + "CELLMODEM_MDN=666\r\n";
    return flood;
}

std::string Usual(const std::string&, const std::string& usual) {
    return usual;
}

// 90 ms is behind the reads of a transaction that waits for nothing, and within the next one.
const Strangeness kStrangenesses[] = {
    {"silence", NoAnswer},
    {"ERROR", Error},
    {"echo", Echo},
    {"half", Half},
    {"noise", Noise},
    {"flood", Flood},
    {"too late", Usual, 90ms},
};

struct StrangeCard {
    const char* options;
    std::vector<Reply> replies;
};

const std::vector<StrangeCard>& StrangeCards() {
    static const std::vector<StrangeCard> cards = {
        {"-881",
         {{"at^sysinfo", {"^SYSINFO:2,3,0,5,1"}},
          {"at!getband?", {"!GETBAND: WCDMA 1900"}},
          {"AT*CNTI=0", {"*CNTI: 0,UMTS"}},
          {"at+ecio?", {"Tot Ec/Io: -5.5 dB"}},
          {"at!gstatus?",
           {"Current Time:  1234\t\tTemperature: 38", "RX level (dBm):-80", "GPRS State:    READY",
            "GMM (PS) state:REGISTERED\tNORMAL SERVICE",
            "WCDMA channel: 9662\t\tGSM channel: 512"}},
          {"AT+CREG?", {"+CREG: 2,1,\"1A2B\",\"01C3D401\""}},
          {"at+cnum", {"+CNUM: \"\",\"2015550188\",129"}},
          // Cut in the middle it tells no number: a part of the number would count as the whole.
          {"at!GSMINFO?", {"The network in use", "PLMN: 001 010"}},
          {"AT+CGDCONT?", {"+CGDCONT: 1,\"IP\",\"internet\",\"0.0.0.0\",0,0"}},
          {"AT!ICCID?", {"!ICCID: 8900101000000000017"}},
          {"AT+CSQ", {"+CSQ: 17,99"}},
          {"AT+CSQ?", {"+CSQ: 17,99"}}}},
        {"-E362",
         {{"at$qcsimstat?", {"$QCSIMSTAT: 0, SIM INIT COMPLETED"}},
          {"AT$NWSYSMODE", {"LTE"}},
          {"AT$NWRSSI=15", {"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"}},
          {"AT+TEMP", {"+TEMP: 41"}},
          {"AT+CEREG?", {"+CEREG: 0,1"}},
          {"AT$NWNN", {"Example Net"}},
          {"AT$NWMDN", {"2015550136"}},
          {"AT+CGDCONT?", {"+CGDCONT: 1,\"IP\",\"internet\",\"0.0.0.0\",0,0"}},
          {"AT+ICCID?", {"$NWICCID: 8900101000000000017"}},
          {"AT$NWQMISTATUS", {"$NWQMISTATUS: Success: 0", "QMI State: CONNECTED"}},
          {"AT+CSQ", {"+CSQ: 17,99"}},
          {"AT+CSQ?", {"+CSQ: 17,99"}}}},
        {"-E371",
         {{"AT$NWRAT?", {"$NWRAT: 0,2,8"}},
          {"at+cnum", {"+CNUM: \"\",\"2015550137\",129"}},
          {"AT$NWRSSI=15", {"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"}},
          {"AT+CEREG?", {"+CEREG: 0,1"}},
          {"AT+TEMP", {"+TEMP: 41"}},
          {"AT$NWQMISTATUS", {"$NWQMISTATUS: Success: 0", "QMI State: CONNECTED"}}}},
        {"-USB305",
         {{"AT*CNTI=0", {"ERROR"}},
          {"AT!GETRAT?", {"!GETRAT: UMTS"}},
          {"at^sysinfo", {"^SYSINFO:2,3,0,5,1"}},
          {"AT+CREG?", {"+CREG: 0,1"}}}},
        {"-mc75i",
         {{"at+cnum", {"+CNUM: \"\",\"2015550175\",129"}},
          {"AT^SCID", {"^SCID: 8900101000000000017"}},
          {"AT+CGDCONT?", {"+CGDCONT: 1,\"IP\",\"internet\",\"0.0.0.0\",0,0"}}}},
    };
    return cards;
}

class StrangeModem : public testing::Test {
  protected:
    static void SetUpRouter(World& world) {
        world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "SYNC_TIME=no\n");
        world.router.SetAddress("10.64.0.2");
        world.router.SetTxBytes(
            [](rig::Duration now) { return static_cast<std::uint64_t>(now.count()); });
        world.trace.Watch(kStatistics);
        world.trace.Watch("/var/log/lightbar");
    }

    static std::string Body(const std::string& text) { return text.substr(text.find('\n') + 1); }

    // Every version so far has the usual lines in their order, and none is forged.
    static void ExpectSoundFiles(World& world, const Lines& keys) {
        for (const rig::FileVersion& version : world.trace.Versions(kStatistics)) {
            EXPECT_EQ(keys, KeysOf(Body(version.text)));
            EXPECT_EQ(std::string::npos, version.text.find("\nCELLMODEM_MDN=666\n"));
        }
        for (const rig::FileVersion& version : world.trace.Versions("/var/log/lightbar")) {
            EXPECT_EQ(version.text.size() - 1, version.text.find('\n'));
        }
        for (const char* name : {"wireless.serialno", "wireless.mdn", "lightbar_ecio_in"}) {
            const std::string text = Files::Read(std::string("/var/log/") + name);
            EXPECT_EQ(text.size() - 1, text.find('\n')) << name;
        }
        EXPECT_TRUE(world.daemon.Running());
    }
};

}  // namespace

TEST_F(StrangeModem, IsSurvivedQueryByQuery) {
    for (const StrangeCard& card : StrangeCards()) {
        World world(card.options);
        world.modem.AllowUnknownCommands();
        SetUpRouter(world);
        Teach(world, card.replies);
        world.Start();
        world.RunFor(3min);
        const std::string usual = Body(Files::Read(kStatistics));
        const Lines keys = KeysOf(usual);
        ASSERT_GT(keys.size(), 15U);

        for (const Reply& reply : card.replies) {
            for (const Strangeness& strange : kStrangenesses) {
                SCOPED_TRACE(std::string(card.options) + " " + reply.command + " " + strange.name);
                world.trace.Clear();
                const std::string answer = strange.answer(reply.command, Answered(reply.lines));
                world.modem.Answer(reply.command, answer, strange.delay);
                world.RunFor(45s);
                ExpectSoundFiles(world, keys);
                Teach(world, {reply});
            }
            SCOPED_TRACE(std::string(card.options) + " after " + reply.command);
            world.RunFor(100s);
            EXPECT_EQ(usual, Body(Files::Read(kStatistics)));
        }
    }
}

// From the very first command on, all answers at once.
TEST_F(StrangeModem, IsSurvivedFromTheStart) {
    for (const StrangeCard& card : StrangeCards()) {
        for (const Strangeness& strange : kStrangenesses) {
            SCOPED_TRACE(std::string(card.options) + " " + strange.name);
            World world(card.options);
            world.modem.AllowUnknownCommands();
            SetUpRouter(world);
            for (const Reply& reply : card.replies) {
                const std::string answer = strange.answer(reply.command, Answered(reply.lines));
                world.modem.Answer(reply.command, answer, strange.delay);
            }
            for (const char* command : {"at+gsn", "at+gmi", "at+gmm"}) {
                const std::string answer = strange.answer(command, Answered({"001017000000008"}));
                world.modem.Answer(command, answer, strange.delay);
            }
            world.Start();
            world.RunFor(60s);
            ASSERT_FALSE(world.trace.Versions(kStatistics).empty());
            const Lines keys = KeysOf(Body(world.trace.Versions(kStatistics).front().text));
            EXPECT_GT(keys.size(), 15U);
            ExpectSoundFiles(world, keys);
        }
    }
}

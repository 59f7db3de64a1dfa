// A long life of the daemon with each modem, idle and under traffic: what it holds at the end of
// its first and its last day, and what it writes in one of them. One line "KEY VALUE" each;
// gear/endurance makes the tables of docs/endurance.md of them.
//
//     bench_year 365           that many days of each card
//     bench_year 365 881       of one card

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "rig/card_options.h"
#include "rig/private_root.h"
#include "rig/program.h"
#include "rig/world.h"

namespace {

using namespace rig;
namespace fs = std::filesystem;

constexpr Duration kDay = 24h;
constexpr Duration kChapter = 1h;  // the trace is looked at and let go this often

const char* const kStatusFiles[] = {"/var/log/wireless.cardstats",
                                    "/var/log/wireless.serialno",
                                    "/var/log/wireless.mdn",
                                    "/var/log/lightbar",
                                    "/var/log/lightbar_ecio_in",
                                    "/var/log/lightbar_chan_in",
                                    "/var/log/wirelessactivation_status",
                                    "/tmp/udhcpc.wwan0.lfc"};

// The daemon is the one child of this process.
std::string DaemonFolder() {
    std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
    std::string child;
    children >> child;
    return "/proc/" + child;
}

// Of its own, counted page by page.
long AnonymousKilobytes() {
    std::ifstream rollup(DaemonFolder() + "/smaps_rollup");
    long kilobytes = 0;
    for (std::string word; rollup >> word;) {
        if (word == "Anonymous:") rollup >> kilobytes;
    }
    return kilobytes;
}

long Descriptors() {
    return std::distance(fs::directory_iterator(DaemonFolder() + "/fd"), fs::directory_iterator{});
}

std::uintmax_t SizeOf(const std::string& path) {
    std::error_code missing;
    const std::uintmax_t size = fs::file_size(path, missing);
    return missing ? 0 : size;
}

struct Life {
    Life(const cards::Model& model, bool traffic)
        : name(std::string(model.name) + (traffic ? ".traffic" : ".idle")), world(OptionOf(model)) {
        for (const char* path : kStatusFiles) world.trace.Watch(path);
        world.modem.Sim().SetHeardLimit(1);
        world.router.SetAddress("10.64.0.2");
        world.router.SetTxBytes([](Duration now) { return static_cast<std::uint64_t>(now / 1s); });
        world.trace.Keep({Kind::kNote});
        if (traffic) MakeTraffic();
    }

    // Signal, cell and messages change all the time, and the call drops every hour.
    void MakeTraffic() {
        world.clock.Every(1min, [this] {
            world.modem.Tell("signal " + std::to_string(5 + world.clock.Now() / 1min % 23));
        });
        world.clock.Every(5min, [this] {
            world.modem.Tell("cell 1A2B 1C3D" + std::to_string(world.clock.Now() / 5min % 10));
        });
        world.clock.Every(10min, [this] {
            world.modem.Tell("sms +15551234567 \"Hello from the field.\"");
            world.files.Write("/tmp/sms/send/message", "TO=+15557654321\nMSG=All is well.\n");
        });
        world.clock.Every(30min, [] {  // who reads the messages takes them away
            for (const std::string& one : Files::List("/tmp/sms/recv")) {
                Files::Remove("/tmp/sms/recv/" + one);
            }
        });
        world.clock.Every(1h, [this] { world.modem.Tell("drop-call"); });
    }

    void Print(const std::string& what, double value) const {
        std::printf("%s.%s %.0f\n", name.c_str(), what.c_str(), value);
        std::fflush(stdout);
    }

    void PrintHeld(const std::string& when) const {
        Print(when + ".memory_kib", static_cast<double>(AnonymousKilobytes()));
        Print(when + ".descriptors", static_cast<double>(Descriptors()));
        Print(when + ".blocks", static_cast<double>(world.daemon.BlocksHeld()));
        Print(when + ".own_log_bytes",
              static_cast<double>(SizeOf("/var/log/csq") + SizeOf("/var/log/csq.1")));
    }

    // A day with the books open.
    void CountADay() {
        std::map<std::string, std::pair<double, double>> files;  // writings and bytes
        double lines = 0;
        double bytes = 0;
        world.trace.Keep({Kind::kFile, Kind::kLog});
        for (int hour = 0; hour < kDay / kChapter; ++hour) {
            world.RunFor(kChapter);
            for (const Event& event : world.trace.Events()) {
                if (event.kind == Kind::kLog) {
                    ++lines;
                    bytes += static_cast<double>(event.text.size());
                    continue;
                }
                const auto size = static_cast<std::size_t>(event.number);
                auto& [writings, written] = files[event.text.substr(0, size)];
                ++writings;
                written += static_cast<double>(event.text.size() - size);
            }
            world.trace.Clear();
        }
        world.trace.Keep({Kind::kNote});
        Print("log.writes", lines);
        Print("log.bytes", bytes);
        for (const char* path : kStatusFiles) {
            Print(std::string(path) + ".writes", files[path].first);
            Print(std::string(path) + ".bytes", files[path].second);
        }
    }

    void Live(long days) {
        world.Start();
        world.RunFor(kDay);
        PrintHeld("first");
        CountADay();
        world.RunFor((days - 2) * kDay);
        PrintHeld("last");
        Print("days", static_cast<double>(days));
    }

    std::string name;
    World world;
};

int LiveAll(long days, const std::string& wanted) {
    for (const cards::Model& model : cards::kModels) {
        if (!wanted.empty() && model.name != wanted) continue;
        for (const bool traffic : {false, true}) Life(model, traffic).Live(days);
    }
    return ::testing::Test::HasFailure() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const long days = argc > 1 ? std::atol(argv[1]) : 0;
    if (days < 3) {
        std::fprintf(stderr, "Usage: bench_year DAYS [CARD], 3 days at least\n");
        return 2;
    }
    const std::string card = argc > 2 ? argv[2] : "";
    const auto folder = fs::absolute(DaemonProgram()).parent_path();
    return RunInPrivateRoot({RIG_SOURCE, RIG_BUILD, folder.string()},
                            [&] { return LiveAll(days, card); });
}

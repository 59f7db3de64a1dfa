#include "carrier_side.h"

namespace demo {

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t kLeaseBytes = 2 * 342;  // a request and the one before it, as udhcpc sends
constexpr std::int64_t kPingBytes = 98;
constexpr rig::Duration kServerTime = 300ms;
constexpr rig::Duration kClientPatience = 9s;  // three tries of three seconds
constexpr rig::Duration kPingPatience = 10s;

}  // namespace

CarrierSide::CarrierSide(rig::World& world) : world_(world) {
    world.router.SetTxBytes([this](rig::Duration) { return static_cast<std::uint64_t>(bytes_); });
    world.modem.OnCall([this](bool up) { call_is_up_ = up; });
    world.router.OnShell("udhcpc ", [this](const std::string&) { return StartClient(); });
    world.router.OnShell("ping ", [this](const std::string&) { return Ping(); });
    world.router.OnShell("ifconfig wwan0 0.0.0.0", [this](const std::string&) {
        LoseAddress();
        return 0;
    });
    world.router.OnShell("kill `cat /var/run/udhcpc-wwan0.pid", [this](const std::string&) {
        client_runs_ = false;
        return 0;
    });
}

int CarrierSide::StartClient() {
    const bool signalled = client_runs_;
    client_runs_ = true;
    if (call_is_up_) {
        world_.router.TakeTime(kServerTime);
        TakeAddress();
    } else if (!signalled) {
        world_.router.TakeTime(kClientPatience);
    }
    return 0;
}

int CarrierSide::Ping() {
    if (!call_is_up_ || !has_address_) {
        world_.router.TakeTime(kPingPatience);
        return 1;
    }
    bytes_ += kPingBytes;
    return 0;
}

void CarrierSide::TakeAddress() {
    bytes_ += kLeaseBytes;
    has_address_ = true;
    world_.router.SetAddress(kAddress);
}

void CarrierSide::LoseAddress() {
    has_address_ = false;
    world_.router.ClearAddress();
}

}  // namespace demo

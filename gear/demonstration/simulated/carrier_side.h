// The other side of wwan0 in simulated time: the router's DHCP client, the carrier's server behind
// the modem's data call, and the bytes that pass.
#pragma once

#include <cstdint>

#include "rig/world.h"

namespace demo {

// As in the router sandbox: an address comes at once while the call is up, a client that finds no
// server gives up after nine seconds and waits in the background, a second start only signals it,
// and an address outlives its call until somebody takes it away.
class CarrierSide {
  public:
    explicit CarrierSide(rig::World& world);
    CarrierSide(const CarrierSide&) = delete;
    CarrierSide& operator=(const CarrierSide&) = delete;

    bool CallIsUp() const { return call_is_up_; }
    bool HasAddress() const { return has_address_; }
    std::int64_t Bytes() const { return bytes_; }  // each way

  private:
    int StartClient();
    int Ping();
    void TakeAddress();
    void LoseAddress();

    rig::World& world_;
    bool call_is_up_ = false;
    bool client_runs_ = false;
    bool has_address_ = false;
    std::int64_t bytes_ = 0;
};

constexpr char kAddress[] = "10.64.0.60";

}  // namespace demo

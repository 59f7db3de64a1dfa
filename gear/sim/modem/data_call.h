// The QMI data call: it takes time to come up and go down, can fail, last only so long, be of
// unknown state, or come up without the network giving the host an address.
#pragma once

#include <functional>
#include <string>

#include "sim/modem/text.h"

namespace sim {

// Results of the last request, as the modem numbers them.
constexpr int kQmiSuccess = 0;
constexpr int kQmiCallFailed = 14;
constexpr int kQmiAlreadyStarted = 26;

// Reasons for the end of a call; 0: none yet.
constexpr int kEndedByClient = 2;
constexpr int kNoService = 3;
constexpr int kReleasedByNetwork = 5;

class DataCall {
  public:
    enum class Phase { kDown, kConnecting, kUp, kDisconnecting };

    // The host's link came up or went down. A call without an address never says up.
    std::function<void(bool up)> on_link;

    // The host's requests.
    void Connect(Micros now, bool has_service);
    void Disconnect(Micros now);

    // What others do to the call.
    void ForceUp(Micros now);
    void Drop(int end_reason, Micros now);
    void ServiceChanged(bool has_service, Micros now);  // a call outlives a short loss of service

    void FailNext(int result, int end_reason, int times);  // times < 0: until FailNext(0, 0, 0)
    void SetLasts(Micros lasts);                           // 0: until something ends it
    void SetNoAddress(bool no_address);
    void SetUnknown(bool unknown) { unknown_ = unknown; }
    void SetTimes(Micros connect, Micros disconnect, Micros survives);

    Micros Next() const;  // when Run has work; kNever when nothing is under way
    void Run(Micros now);

    Phase GetPhase() const { return phase_; }
    const char* StateText() const;  // "CONNECTED", "DISCONNECTED", ..., or "unknown"
    int Result() const { return result_; }
    int EndReason() const { return end_reason_; }
    Micros Length(Micros now) const;         // of the current or the last call
    std::string Duration(Micros now) const;  // the same as "hh:mm:ss"

  private:
    void ComeUp(Micros now);
    void GoDown(int end_reason);
    void UpdateLink();

    Micros connect_time_ = 1500 * kMillisecond;
    Micros disconnect_time_ = 400 * kMillisecond;
    Micros survives_ = 60 * kSecond;  // without service
    Micros lasts_ = 0;
    int fail_result_ = 0, fail_reason_ = 0, fail_times_ = 0;
    bool unknown_ = false, no_address_ = false;

    Phase phase_ = Phase::kDown;
    bool link_up_ = false;
    bool will_fail_ = false;   // the attempt under way is doomed
    Micros due_ = kNever;      // end of connecting, of disconnecting, or of the call's life
    Micros lost_at_ = kNever;  // when the call dies for want of service
    Micros up_since_ = 0;
    Micros last_length_ = 0;
    int result_ = kQmiSuccess;
    int end_reason_ = 0;
    int doomed_result_ = 0, doomed_reason_ = 0;
};

}  // namespace sim

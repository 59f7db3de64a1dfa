#include "sim/modem/data_call.h"

#include <algorithm>

namespace sim {

void DataCall::Connect(Micros now, bool has_service) {
    if (phase_ == Phase::kUp || phase_ == Phase::kConnecting) {
        result_ = kQmiAlreadyStarted;
        return;
    }
    phase_ = Phase::kConnecting;
    due_ = now + connect_time_;
    will_fail_ = fail_times_ != 0 || !has_service;
    if (fail_times_ != 0) {
        doomed_result_ = fail_result_;
        doomed_reason_ = fail_reason_;
        if (fail_times_ > 0) --fail_times_;
    } else if (!has_service) {
        doomed_result_ = kQmiCallFailed;
        doomed_reason_ = kNoService;
    }
}

void DataCall::Disconnect(Micros now) {
    result_ = kQmiSuccess;
    if (phase_ == Phase::kDown || phase_ == Phase::kDisconnecting) return;
    if (phase_ == Phase::kUp) last_length_ = now - up_since_;
    phase_ = Phase::kDisconnecting;
    due_ = now + disconnect_time_;
    lost_at_ = kNever;
    UpdateLink();
}

void DataCall::ForceUp(Micros now) {
    if (phase_ == Phase::kUp) return;
    ComeUp(now);
}

void DataCall::Drop(int end_reason, Micros now) {
    if (phase_ == Phase::kDown) return;
    if (phase_ == Phase::kUp) last_length_ = now - up_since_;
    GoDown(end_reason);
}

void DataCall::ServiceChanged(bool has_service, Micros now) {
    if (has_service) {
        lost_at_ = kNever;
    } else if (phase_ == Phase::kUp && lost_at_ == kNever) {
        lost_at_ = now + survives_;
    }
}

void DataCall::FailNext(int result, int end_reason, int times) {
    fail_result_ = result;
    fail_reason_ = end_reason;
    fail_times_ = times;
}

void DataCall::SetLasts(Micros lasts) {
    lasts_ = lasts;
    if (phase_ == Phase::kUp) due_ = lasts_ > 0 ? up_since_ + lasts_ : kNever;
}

void DataCall::SetNoAddress(bool no_address) {
    no_address_ = no_address;
    UpdateLink();
}

void DataCall::SetTimes(Micros connect, Micros disconnect, Micros survives) {
    connect_time_ = connect;
    disconnect_time_ = disconnect;
    survives_ = survives;
}

Micros DataCall::Next() const {
    return std::min(due_, lost_at_);
}

void DataCall::Run(Micros now) {
    if (lost_at_ <= now) {
        last_length_ = now - up_since_;
        GoDown(kNoService);
        return;
    }
    if (due_ > now) return;
    switch (phase_) {
        case Phase::kConnecting:
            if (will_fail_) {
                GoDown(doomed_reason_);
                result_ = doomed_result_;
            } else {
                ComeUp(now);
            }
            break;
        case Phase::kUp:
            last_length_ = now - up_since_;
            GoDown(kReleasedByNetwork);
            break;
        case Phase::kDisconnecting:
            GoDown(kEndedByClient);
            break;
        case Phase::kDown:
            due_ = kNever;
            break;
    }
}

const char* DataCall::StateText() const {
    if (unknown_) return "unknown";
    switch (phase_) {
        case Phase::kDown:
            return "DISCONNECTED";
        case Phase::kConnecting:
            return "CONNECTING";
        case Phase::kUp:
            return "CONNECTED";
        case Phase::kDisconnecting:
            return "DISCONNECTING";
    }
    return "unknown";
}

Micros DataCall::Length(Micros now) const {
    return phase_ == Phase::kUp ? now - up_since_ : last_length_;
}

std::string DataCall::Duration(Micros now) const {
    const auto seconds = Length(now) / kSecond;
    return Print("%02lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                 static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
}

void DataCall::ComeUp(Micros now) {
    phase_ = Phase::kUp;
    result_ = kQmiSuccess;
    end_reason_ = 0;
    up_since_ = now;
    lost_at_ = kNever;
    due_ = lasts_ > 0 ? now + lasts_ : kNever;
    UpdateLink();
}

void DataCall::GoDown(int end_reason) {
    phase_ = Phase::kDown;
    end_reason_ = end_reason;
    due_ = kNever;
    lost_at_ = kNever;
    UpdateLink();
}

void DataCall::UpdateLink() {
    const bool up = phase_ == Phase::kUp && !no_address_;
    if (up == link_up_) return;
    link_up_ = up;
    if (on_link) on_link(up);
}

}  // namespace sim

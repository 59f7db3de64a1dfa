#include "sim/modem/sms_store.h"

#include <algorithm>

namespace sim {

namespace {

constexpr std::pair<const char*, std::optional<SmsState>> kNames[] = {
    {"REC UNREAD", SmsState::kUnread},
    {"REC READ", SmsState::kRead},
    {"STO UNSENT", std::nullopt},
    {"STO SENT", std::nullopt},
};

bool GoesWithFlag(SmsState state, int flag) {
    return flag >= (state == SmsState::kRead ? 1 : 4);
}

}  // namespace

const char* SmsStateName(SmsState state) {
    return state == SmsState::kRead ? "REC READ" : "REC UNREAD";
}

int SmsStore::Deliver(StoredSms message) {
    if (!waiting_.empty() || Full()) {
        waiting_.push_back(std::move(message));
        return 0;
    }
    return Place(std::move(message));
}

const StoredSms* SmsStore::Find(int index) const {
    if (index < 1 || index > Capacity()) return nullptr;
    const auto& place = places_[static_cast<std::size_t>(index - 1)];
    return place ? &*place : nullptr;
}

void SmsStore::MarkRead(int index) {
    auto& place = places_[static_cast<std::size_t>(index - 1)];
    if (place && place->state == SmsState::kUnread) place->state = SmsState::kRead;
}

std::optional<std::vector<int>> SmsStore::Matching(const std::string& which) const {
    const auto known = std::find_if(std::begin(kNames), std::end(kNames),
                                    [&](const auto& name) { return which == name.first; });
    if (known == std::end(kNames) && which != "ALL") return std::nullopt;
    std::vector<int> indexes;
    for (int index = 1; index <= Capacity(); ++index) {
        const StoredSms* message = Find(index);
        if (message != nullptr && (which == "ALL" || message->state == known->second)) {
            indexes.push_back(index);
        }
    }
    return indexes;
}

bool SmsStore::Delete(int index, int flag) {
    if (flag == 0) {
        if (Find(index) == nullptr) return false;
        places_[static_cast<std::size_t>(index - 1)].reset();
    }
    for (auto& place : places_) {
        if (place && GoesWithFlag(place->state, flag)) place.reset();
    }
    LetIn();
    return true;
}

void SmsStore::SetCapacity(int places) {
    places_.resize(static_cast<std::size_t>(places));
    LetIn();
}

int SmsStore::Used() const {
    return static_cast<int>(
        std::count_if(places_.begin(), places_.end(), [](const auto& p) { return p.has_value(); }));
}

int SmsStore::Place(StoredSms message) {
    const auto free = std::find(places_.begin(), places_.end(), std::nullopt);
    *free = std::move(message);
    return static_cast<int>(free - places_.begin()) + 1;
}

void SmsStore::LetIn() {
    while (!waiting_.empty() && !Full()) {
        StoredSms message = std::move(waiting_.front());
        waiting_.pop_front();
        Place(std::move(message));
    }
}

}  // namespace sim

#include "sim/modem/sms_store.h"

#include <algorithm>

namespace sim {

namespace {

constexpr std::pair<SmsState, const char*> kStates[] = {
    {SmsState::kUnread, "REC UNREAD"},
    {SmsState::kRead, "REC READ"},
    {SmsState::kUnsent, "STO UNSENT"},
    {SmsState::kSent, "STO SENT"},
};

bool GoesWithFlag(SmsState state, int flag) {
    switch (state) {
        case SmsState::kRead:
            return flag >= 1;
        case SmsState::kSent:
            return flag >= 2;
        case SmsState::kUnsent:
            return flag >= 3;
        case SmsState::kUnread:
            return flag >= 4;
    }
    return false;
}

}  // namespace

const char* SmsStateName(SmsState state) {
    for (const auto& [known, name] : kStates) {
        if (known == state) return name;
    }
    return "";
}

int SmsStore::Deliver(StoredSms message) {
    if (!waiting_.empty() || Full()) {
        waiting_.push_back(std::move(message));
        return 0;
    }
    return Place(std::move(message));
}

std::optional<int> SmsStore::Save(StoredSms message) {
    if (Full()) return std::nullopt;
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
    const auto known = std::find_if(std::begin(kStates), std::end(kStates),
                                    [&](const auto& state) { return which == state.second; });
    if (known == std::end(kStates) && which != "ALL") return std::nullopt;
    std::vector<int> indexes;
    for (int index = 1; index <= Capacity(); ++index) {
        const StoredSms* message = Find(index);
        if (message != nullptr && (which == "ALL" || message->state == known->first)) {
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

std::string SmsStore::ListEntry(int index) const {
    const StoredSms& message = *Find(index);
    std::string line = "+CMGL: " + std::to_string(index) + ",\"" + SmsStateName(message.state) +
                       "\",\"" + message.number + "\",,";
    if (!message.stamp.empty()) line += "\"" + message.stamp + "\"";
    return line + "\r\n" + message.text;
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

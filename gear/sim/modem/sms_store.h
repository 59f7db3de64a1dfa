// The store of short messages, as TS 27.005 describes it.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/modem/text.h"

namespace sim {

// Codes of +CMS ERROR that the store and the sender give by themselves.
constexpr int kCmsNotAllowed = 302;
constexpr int kCmsBadPduParameter = 304;
constexpr int kCmsBadTextParameter = 305;
constexpr int kCmsNoSim = 310;
constexpr int kCmsSimPin = 311;
constexpr int kCmsBadIndex = 321;
constexpr int kCmsNoNetwork = 331;
constexpr int kCmsUnknown = 500;

struct SentSms {
    std::string to;
    std::string text;
    Micros at;
};

enum class SmsState { kUnread, kRead };  // numbered as PDU mode numbers them

const char* SmsStateName(SmsState state);  // "REC UNREAD" or "REC READ"

struct StoredSms {
    SmsState state;
    std::string number;
    std::string stamp;
    std::string text;
};

class SmsStore {
  public:
    // A message from the network. With the store full it waits there until a place is free.
    // Returns its index (from 1), or 0 while it waits.
    int Deliver(StoredSms message);

    const StoredSms* Find(int index) const;
    void MarkRead(int index);
    // `which`: a state's name or "ALL"; nothing when it is neither. Messages of the host's own are
    // never stored, but have their names.
    std::optional<std::vector<int>> Matching(const std::string& which) const;

    // <delflag> 0: this index, false when there is nothing; 1 to 3: those that were read; 4:
    // everything. Messages that waited move in afterwards.
    bool Delete(int index, int flag);

    void SetCapacity(int places);
    int Capacity() const { return static_cast<int>(places_.size()); }
    int Used() const;
    bool Full() const { return Used() == Capacity(); }
    std::size_t Waiting() const { return waiting_.size(); }

  private:
    int Place(StoredSms message);
    void LetIn();

    std::vector<std::optional<StoredSms>> places_{20};  // [0] is index 1
    std::deque<StoredSms> waiting_;
};

}  // namespace sim

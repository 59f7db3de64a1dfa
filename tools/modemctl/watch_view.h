// The pages of modemctl watch, drawn as lines.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "modemctl/changes.h"
#include "modemctl/command_line.h"
#include "modemctl/history.h"
#include "modemctl/snapshot.h"

namespace modemctl {

enum class WatchPage { kOverview, kStatus, kSignal, kEvents, kWhy };
constexpr int kWatchPages = 5;

// All that the pages show.
struct WatchState {
    WatchPage page = WatchPage::kOverview;
    Snapshot snapshot;
    Chain chain;
    History history;
    std::deque<Change> changes;    // newest last
    std::string why;               // made when its page is shown
    long long column_seconds = 2;  // of graph and strip
};

std::vector<std::string> DrawWatch(const WatchState& state, const Session& session);

}  // namespace modemctl

// What docs/recovery.md says of a fault, made of several lives through it.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "story.h"

namespace recovery {

// One row of the page. {name} stands for a time or a count that the story tells, from the shortest
// life to the longest.
struct Fault {
    const char* chapter;
    const char* id;
    const char* card;  // the daemon's arguments
    const char* title;
    const char* noticed;  // how, and after how long
    const char* done;     // and how often
    const char* back;
    const char* lost;
    void (*live)(Story& story);
};

void PrintTo(const Fault& fault, std::ostream* out);
const std::vector<Fault>& Faults();

std::string RowOf(const Fault& fault, const std::vector<Lived>& lives);
// Its log lines: when each came first, how often it came and at what distance.
std::string LinesOf(const Fault& fault, const std::vector<Lived>& lives);

}  // namespace recovery

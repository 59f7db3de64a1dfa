// The faults by their chapters; page.cpp has them all in the order of the page.
#pragma once

#include "page.h"

namespace recovery {

std::vector<Fault> PortFaults();
std::vector<Fault> NetworkFaults();
std::vector<Fault> RouterFaults();
std::vector<Fault> DaemonFaults();

inline constexpr char kRestarting[] = "LTE Connected returned 0, restarting connection";
inline constexpr char kGaveUp[] = "Failed to connect to LTE network 10 times, resetting modem";
inline constexpr char kPortLost[] = "Port error counter above 25, resetting modem";
inline constexpr char kNothingLeaves[] = "Warning: TX count on wwan0 not incrementing.";
inline constexpr char kStarting[] = "v1.45 starting";

}  // namespace recovery

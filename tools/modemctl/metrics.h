// modemctl metrics: the router's modem for Prometheus.
#pragma once

#include <string>

#include "modemctl/command_line.h"
#include "modemctl/snapshot.h"

namespace modemctl {

extern const Subcommand kMetricsCommand;

enum class MetricsFormat {
    kPrometheusText,  // 0.0.4, which node_exporter's textfile collector reads
    kOpenMetrics,     // 1.0, for a scraper that asks for it
};

// Radio and call of data that are too old are left out: a gap in a graph is true, a line is not.
// No label holds what is personal or changes without end: no number, no cell, no text.
std::string MetricsText(const Snapshot& snapshot, long long max_age, MetricsFormat format);

}  // namespace modemctl

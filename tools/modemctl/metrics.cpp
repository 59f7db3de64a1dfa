#include "modemctl/metrics.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "modemctl/chain.h"
#include "modemctl/exit_code.h"
#include "modemctl/signal.h"
#include "modemctl/unicode.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

using Labels = std::vector<std::pair<const char*, std::string>>;

// A label's value. What no terminal should see is written in its visible form, and its backslashes
// doubled as the format wants them.
std::string Quoted(const std::string& value) {
    std::string quoted = "\"";
    for (const char c : Escaped(value, true)) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

class MetricsWriter {
  public:
    explicit MetricsWriter(MetricsFormat format) : format_(format) {}

    void Gauge(const char* name, const char* help) { Head(name, help, "gauge"); }

    // The name ends in "_total"; OpenMetrics declares the counter without it.
    void Counter(const char* name, const char* help) { Head(name, help, "counter"); }

    void Sample(double value, const Labels& labels = {}) {
        text_ += name_;
        const char* separator = "{";
        for (const auto& [label, content] : labels) {
            text_ += std::string(separator) + label + "=" + Quoted(content);
            separator = ",";
        }
        if (!labels.empty()) text_ += '}';
        text_ += Format(" %.15g\n", value);
    }

    void GaugeOf(const char* name, const char* help, double value) {
        Gauge(name, help);
        Sample(value);
    }

    void GaugeIf(const char* name, const char* help, const std::optional<double>& value) {
        if (value) GaugeOf(name, help, *value);
    }

    void CounterIf(const char* name, const char* help, const std::optional<long long>& value) {
        if (!value) return;
        Counter(name, help);
        Sample(static_cast<double>(*value));
    }

    std::string Finish() {
        if (format_ == MetricsFormat::kOpenMetrics) text_ += "# EOF\n";
        return text_;
    }

  private:
    void Head(const char* name, const char* help, const char* type) {
        name_ = name;
        std::string family = name;
        constexpr char kTotal[] = "_total";
        constexpr std::size_t kTotalLength = sizeof(kTotal) - 1;
        if (format_ == MetricsFormat::kOpenMetrics && std::strcmp(type, "counter") == 0) {
            family.erase(family.size() - kTotalLength);
        }
        text_ += "# HELP " + family + " " + help + "\n# TYPE " + family + " " + type + "\n";
    }

    MetricsFormat format_;
    std::string name_;
    std::string text_;
};

std::string TextOf(const Statistics& statistics, const char* name) {
    const Value value = statistics.Get(name);
    return value.IsTold() ? value.text : "";
}

std::optional<double> AsDouble(const std::optional<long long>& value) {
    if (!value) return std::nullopt;
    return static_cast<double>(*value);
}

void AddIdentity(MetricsWriter& metrics, const Statistics& statistics) {
    metrics.Gauge("modem_info", "The modem, in its labels.");
    metrics.Sample(1, {{"manufacturer", TextOf(statistics, key::kManufacturer)},
                       {"model", TextOf(statistics, key::kModel)},
                       {"firmware", TextOf(statistics, key::kFirmwareVersion)}});
    metrics.Gauge("modem_network_info", "The network in use, in its labels.");
    metrics.Sample(1, {{"carrier", TextOf(statistics, key::kCarrier)},
                       {"technology", TextOf(statistics, key::kServiceType)}});
}

void AddSignal(MetricsWriter& metrics, const Statistics& statistics) {
    const Signal signal = ReadSignal(statistics);
    metrics.GaugeIf("modem_signal_rssi_dbm", "Received signal strength.", AsDouble(signal.rssi));
    metrics.GaugeIf("modem_signal_csq", "Signal as the modem reports it, 0 to 31.",
                    AsDouble(signal.csq));
    metrics.GaugeIf("modem_signal_rsrp_dbm", "Power of the LTE reference signal.", signal.rsrp);
    metrics.GaugeIf("modem_signal_rsrq_db", "Quality of the LTE reference signal.", signal.rsrq);
    metrics.GaugeIf("modem_signal_ecio_db", "Ec/Io of the pilot channel.", signal.ecio);
    metrics.GaugeIf("modem_temperature_celsius", "Temperature of the modem.",
                    AsDouble(statistics.Get(key::kTemperature).Integer()));
}

// Links that nobody knows of have no sample.
void AddChain(MetricsWriter& metrics, const Chain& chain) {
    metrics.Gauge("modem_link_part_up", "1 when this part of the link holds, 0 when it is broken.");
    for (std::size_t i = 0; i < kChainParts; ++i) {
        const Hold hold = chain.links[i].hold;
        if (hold != Hold::kHolds && hold != Hold::kBroken) continue;
        std::string part = PartName(static_cast<ChainPart>(i));
        ToLower(part);
        metrics.Sample(hold == Hold::kHolds ? 1 : 0, {{"part", part}});
    }
}

void AddSpool(MetricsWriter& metrics, const Snapshot& snapshot) {
    const std::pair<const char*, const Spool*> kSpools[] = {
        {"send", &snapshot.sending}, {"recv", &snapshot.received}, {"send_fail", &snapshot.failed}};
    metrics.Gauge("modem_sms_files", "Messages in a directory of the spool.");
    for (const auto& [name, spool] : kSpools) {
        metrics.Sample(static_cast<double>(spool->files), {{"directory", name}});
    }
    metrics.Gauge("modem_sms_oldest_age_seconds", "Age of the oldest message in it, 0 for none.");
    for (const auto& [name, spool] : kSpools) {
        const auto age = static_cast<double>(snapshot.now - spool->oldest);
        metrics.Sample(spool->files > 0 ? age : 0, {{"directory", name}});
    }
}

// In a new file beside it, then renamed over it, so that a collector finds the old or the new.
std::string WriteByRename(const std::string& path, const std::string& text) {
    const std::string beside = path + Format(".%d.tmp", static_cast<int>(getpid()));
    const int fd = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) return std::strerror(errno);
    const ssize_t count = write(fd, text.data(), text.size());
    const bool written = count == static_cast<ssize_t>(text.size()) && fsync(fd) == 0;
    int error = written ? 0 : (count < 0 ? errno : ENOSPC);
    close(fd);
    if (error == 0 && std::rename(beside.c_str(), path.c_str()) != 0) error = errno;
    if (error == 0) return "";
    unlink(beside.c_str());
    return std::strerror(error);
}

int RunMetrics(Session& session) {
    if (session.json) return UsageError("metrics", "metrics have a format of their own, no JSON");
    const Snapshot snapshot = TakeSnapshot(session.tree, session.now);
    const auto format =
        session.Has("--openmetrics") ? MetricsFormat::kOpenMetrics : MetricsFormat::kPrometheusText;
    const std::string text = MetricsText(snapshot, session.max_age, format);
    if (!session.Has("--output")) {
        Print(text);
        return kGood;
    }
    const std::string file = session.Value("--output");
    const std::string complaint = WriteByRename(file, text);
    if (complaint.empty()) return kGood;
    std::fprintf(stderr, "modemctl: cannot write %s: %s\n", Escaped(file, false).c_str(),
                 complaint.c_str());
    return kNotGood;
}

}  // namespace

std::string MetricsText(const Snapshot& snapshot, long long max_age, MetricsFormat format) {
    const Chain chain = JudgeChain(snapshot, max_age);
    const Freshness freshness = snapshot.StatisticsFreshness(max_age);
    MetricsWriter metrics(format);
    metrics.GaugeOf("modem_link_up", "1 when nothing is known to be wrong with the link.",
                    chain.verdict == kGood ? 1 : 0);
    if (snapshot.daemon != DaemonState::kUnknown) {
        metrics.GaugeOf("modem_daemon_running", "1 when the modem daemon runs.",
                        snapshot.daemon == DaemonState::kRunning ? 1 : 0);
    }
    AddChain(metrics, chain);
    if (freshness != Freshness::kAbsent) {
        metrics.GaugeOf("modem_statistics_age_seconds", "Age of what the daemon has published.",
                        static_cast<double>(snapshot.Age()));
    }
    if (freshness == Freshness::kFresh) {
        AddIdentity(metrics, snapshot.statistics);
        AddSignal(metrics, snapshot.statistics);
    }
    metrics.CounterIf("modem_link_transmit_bytes_total", "Bytes sent on the link's interface.",
                      snapshot.sent_bytes);
    metrics.CounterIf("modem_link_receive_bytes_total", "Bytes received on the link's interface.",
                      snapshot.received_bytes);
    AddSpool(metrics, snapshot);
    return metrics.Finish();
}

const Subcommand kMetricsCommand = {
    "metrics",
    "",
    "the same for Prometheus",
    "Prints metrics in the text format that node_exporter's textfile collector reads. With\n"
    "--output the file is written beside its place and renamed, so that no half of it is read;\n"
    "the collector wants names that end in .prom.",
    {{"--output", "FILE", "replace this file instead of printing"},
     {"--openmetrics", nullptr, "in OpenMetrics 1.0, for a scraper that asks for it"}},
    {{"modemctl metrics --output /var/lib/prometheus/node-exporter/modem.prom",
      "from cron, every minute"}},
    0,
    RunMetrics,
};

}  // namespace modemctl

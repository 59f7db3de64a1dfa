#include "modemctl/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modemctl {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr long long kMaxAge = 60;

Snapshot Fresh() {
    Snapshot snapshot;
    snapshot.now = 1000;
    snapshot.statistics.presence = Presence::kWhole;
    snapshot.statistics.written = 990;
    snapshot.statistics.values = {{"CELLMODEM_IMEI", "001017036200015"},
                                  {"CELLMODEM_MODEL", "E\"3\\6\n2\x1b"},
                                  {"CELLMODEM_CURRENT_RSSI", "-71"},
                                  {"CELLMODEM_CURRENT_CSQ", "31"}};
    snapshot.sent_bytes = 4294967296;
    return snapshot;
}

std::string Text(const Snapshot& snapshot) {
    return MetricsText(snapshot, kMaxAge, MetricsFormat::kPrometheusText);
}

TEST(Metrics, TellWhatIsFresh) {
    const std::string text = Text(Fresh());
    EXPECT_THAT(text, HasSubstr("\nmodem_signal_rssi_dbm -71\n"));
    EXPECT_THAT(text, HasSubstr("\nmodem_statistics_age_seconds 10\n"));
    EXPECT_THAT(text, HasSubstr("\nmodem_link_transmit_bytes_total 4294967296\n"));
    EXPECT_THAT(text, EndsWith("\n"));
}

TEST(Metrics, LeaveOutWhatIsTooOldButItsAge) {
    Snapshot snapshot = Fresh();
    snapshot.now = 5000;
    const std::string text = Text(snapshot);
    EXPECT_THAT(text, Not(HasSubstr("modem_signal_rssi_dbm")));
    EXPECT_THAT(text, HasSubstr("\nmodem_statistics_age_seconds 4010\n"));
    EXPECT_THAT(text, HasSubstr("modem_link_up 0\n"));
}

TEST(Metrics, QuoteLabelsAndNameNobody) {
    const std::string text = Text(Fresh());
    EXPECT_THAT(text, HasSubstr(R"(model="E\"3\\\\6\\n2\\x1b")"));
    EXPECT_THAT(text, Not(HasSubstr("001017036200015")));
}

TEST(Metrics, OfOpenMetricsEndAndNameCountersItsWay) {
    const std::string text = MetricsText(Fresh(), kMaxAge, MetricsFormat::kOpenMetrics);
    EXPECT_THAT(text, HasSubstr("# TYPE modem_link_transmit_bytes counter\n"
                                "modem_link_transmit_bytes_total 4294967296\n"));
    EXPECT_THAT(text, EndsWith("# EOF\n"));
}

}  // namespace
}  // namespace modemctl

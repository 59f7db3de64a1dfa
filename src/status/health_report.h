// The modem's radio state: temperature, bands, channels, levels, protocol states.
#pragma once

// Novatel cards: the temperature, from AT+TEMP. Sierra 881: the status page at!gstatus?, whose
// labels are a table in health_report.cpp. Nothing on the other cards.
void QueryHealthReport();

// The published card statistics: the record, turned into the files that the rest of the router
// reads. The keys are tables in card_statistics.cpp.
#pragma once

#include <string>

// An RSSI magnitude in dBm for a CSQ value: "77" for 31, "110" for 0. "125" when both texts read
// 99; the CSQ text itself for any other value above 32.
std::string CsqToRssi(const std::string& csq, const std::string& previous_csq);

// Rewrites /var/log/wireless.cardstats, wireless.serialno and wireless.mdn, and on the Sierra 881
// /var/log/lightbar_chan_in. Asks the modem for the ICCID on the way. Fills three fields of the
// record itself: an empty rssi from CSQ, rx_level from rssi on LTE, qmi_state without white space.
void DumpAllCardInfo();

// Signal reports: into the record, and into the two small files of the signal display.
#pragma once

// Rewrites a "+CIND:" line in place into the equal "+CSQ:" line ("+CSQ: 22, 99"), from the second
// indicator: the signal, 0 to 5 (3GPP 27.007). Any other value becomes 99, unknown. The buffer must
// have room for 32 characters.
void ConvertIndicatorLine(char* line);

// Takes the caught "+CSQ:" line, <rssi> and bit error rate, into the record and rewrites the
// lightbar files, the line as it stands.
void UpdateLightbar(const char* line);

// RSSI, RSRP (dBm), Ec/Io and RSRQ (dB) of the two Novatel cards. What the answer does not tell is
// then empty. On any other card it clears the RSSI.
void QueryNovatelSignal();

// Ec/Io of the Sierra 881, in dB; empty when the answer does not tell. Nothing on any other card.
void QuerySierraEcio();

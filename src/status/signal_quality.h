// Signal reports: into the record, and into the two small files of the signal display.
#pragma once

// Rewrites a "+CIND:" line in place into the equal "+CSQ:" line ("+CSQ: 22, 99"). The buffer must
// have room for 32 characters.
void ConvertIndicatorLine(char* line);

// Takes the caught "+CSQ:" line into the record and rewrites the lightbar files.
void UpdateLightbar(const char* line);

// RSSI, Ec/Io, RSRP and RSRQ of the two Novatel cards. On any other card it clears the RSSI.
void QueryNovatelSignal();

// Ec/Io of the Sierra 881; nothing on any other card.
void QuerySierraEcio();

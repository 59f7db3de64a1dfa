// What identifies the modem and its subscription. Each query keeps one text field of the record
// current; the queries are rows of a table in identity.cpp.
#pragma once

// The identity pass, in its fixed order, the carrier lookup last. At start-up and every 30 s.
void UpdateCardIdentity();

// The PDP contexts of the SIM; also asked for every 5 s.
void QueryPdpContexts();
// The band of the Sierra 881; asked for on every pass.
void QueryBand();
// The SIM's ICCID; asked for whenever the card statistics file is written.
void QueryIccid();

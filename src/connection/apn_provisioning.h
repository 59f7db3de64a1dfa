// The APN of the configuration, on its way into the modem.
#pragma once

// Writes the APN of the configuration into PDP context 3 of the LTE cards and drops the data call,
// so that the supervision connects again with it. Nothing without an APN or on other cards. What
// the modem answers is not looked at.
void SetApnContext3();

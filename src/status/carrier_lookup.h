// The carrier's name on the Sierra 881, from the modem's own operator list.
#pragma once

// Reads the PLMN number in use (MCC and MNC) and, when the number has changed or the name is still
// unknown, looks its name up in the modem's list, AT+COPN (3GPP 27.007). The list is long and slow:
// that is why the name is kept. A number that the list does not have keeps the name before it.
void GetGsmCarrierFromOperatorNameList();

// The carrier's name on the Sierra 881, from the modem's own operator list.
#pragma once

// Reads the PLMN number in use and, when the number has changed or the name is still unknown,
// looks its name up in the list. The list is long and slow: that is why the name is kept.
void GetGsmCarrierFromOperatorNameList();

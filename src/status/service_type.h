// What kind of service the modem has, asked in each card's own way.
#pragma once

// E362: AT$NWSYSMODE; a change of service starts or stops the no-service timer. E371: AT$NWRAT?.
// Sierra cards: AT*CNTI=0, else AT!GETRAT?. Nothing on the other cards.
//
// An answer without the service leaves service_type at "Unknown".
//
// True when the E362 has come to good service: the caller has the DHCP client ask for an address.
bool QueryServiceType();

// What kind of service the modem has, asked in each card's own way.
#pragma once

// E362: AT$NWSYSMODE; a change of service starts or stops the no-service timer, and good service
// starts the DHCP client. E371: AT$NWRAT?. Sierra cards: AT*CNTI=0, else AT!GETRAT?. Nothing on the
// other cards.
void QueryServiceType();

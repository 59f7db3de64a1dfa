// System information and the SIM's state.
#pragma once

// Sierra cards: service status and domain, roaming, system mode and SIM state from at^sysinfo.
// Novatel cards: whether the SIM is ready, from at$qcsimstat?. On every card the fields are reset
// first, system_mode and sim_ready excepted.
void GetSysinfo();

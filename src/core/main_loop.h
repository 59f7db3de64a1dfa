// The loop that the daemon spends its life in.
#pragma once

// The daemon's only scheduler, paced by sleeps alone. The process leaves it through exit.
[[noreturn]] void RunMainLoop();

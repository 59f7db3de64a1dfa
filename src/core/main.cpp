// The way in.

#include "core/main_loop.h"
#include "core/process.h"
#include "core/startup.h"

int main(int argc, char** argv) {
    PrepareProcess();
    StartUp(argc, argv);
    RunMainLoop();
}

// The way in.

#include "core/main_loop.h"
#include "core/process.h"
#include "core/startup.h"
#include "support/system_log.h"

int main(int argc, char** argv) {
    PrepareProcess();
    NameLogLines();
    StartUp(argc, argv);
    RunMainLoop();
}

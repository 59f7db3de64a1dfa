#include "core/main_loop.h"
#include "core/startup.h"

int main(int argc, char** argv) {
    StartUp(argc, argv);
    RunMainLoop();
}

set(TRIPLE arm-linux-gnueabihf)
set(PROCESSOR armv7l)
set(QEMU arm)
include("${CMAKE_CURRENT_LIST_DIR}/glibc.cmake")

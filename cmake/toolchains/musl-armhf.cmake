set(TRIPLE arm-linux-musleabihf)
set(PROCESSOR armv7l)
set(QEMU arm)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

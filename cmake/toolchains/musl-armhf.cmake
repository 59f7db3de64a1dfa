set(TRIPLE arm-linux-musleabihf)
set(PROCESSOR armv7l)
set(QEMU arm)
set(MODEMD_LTO OFF)  # this linker crashes over it on ARM
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

set(TRIPLE aarch64-linux-gnu)
set(PROCESSOR aarch64)
set(QEMU aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/glibc.cmake")

set(TRIPLE powerpc-linux-gnu)
set(PROCESSOR ppc)
set(QEMU ppc)
include("${CMAKE_CURRENT_LIST_DIR}/glibc.cmake")

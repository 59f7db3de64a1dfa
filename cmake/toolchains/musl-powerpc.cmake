set(TRIPLE powerpc-linux-musl)
set(PROCESSOR ppc)
set(QEMU ppc)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

set(TRIPLE riscv64-linux-musl)
set(PROCESSOR riscv64)
set(QEMU riscv64)
set(MODEMD_LTO OFF)  # its C library was compiled with another limit for small data
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

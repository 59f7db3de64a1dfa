set(TRIPLE riscv64-linux-musl)
set(PROCESSOR riscv64)
set(QEMU riscv64)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

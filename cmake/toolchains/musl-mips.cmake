set(TRIPLE mips-linux-musl)
set(PROCESSOR mips)
set(QEMU mips)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

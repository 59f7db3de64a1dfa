set(TRIPLE mipsel-linux-musl)
set(PROCESSOR mips)
set(QEMU mipsel)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

set(TRIPLE mipsel-linux-gnu)
set(PROCESSOR mips)
set(QEMU mipsel)
include("${CMAKE_CURRENT_LIST_DIR}/glibc.cmake")

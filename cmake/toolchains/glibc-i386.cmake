set(TRIPLE i686-linux-gnu)
set(PROCESSOR i686)
set(QEMU i386)
include("${CMAKE_CURRENT_LIST_DIR}/glibc.cmake")

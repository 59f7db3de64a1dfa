set(TRIPLE x86-linux-musl)
set(PROCESSOR i686)
set(QEMU i386)
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

set(TRIPLE x86_64-linux-musl)
set(PROCESSOR x86_64)
set(MODEMD_STATIC_FLAGS -static -pie CACHE STRING "")
include("${CMAKE_CURRENT_LIST_DIR}/musl.cmake")

# What the toolchain files of Debian's cross compilers share. They set TRIPLE, the compiler's prefix,
# PROCESSOR, as uname(1) says it there, and QEMU, the name of the user-mode emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${PROCESSOR})
set(CMAKE_CXX_COMPILER ${TRIPLE}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${QEMU}-static -L /usr/${TRIPLE})
set(CMAKE_FIND_ROOT_PATH /usr/${TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

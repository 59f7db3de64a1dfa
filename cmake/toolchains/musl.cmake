# What the toolchain files for musl share. They set TRIPLE, PROCESSOR and, for another processor
# than this one, QEMU. scripts/musl-toolchain installs the compilers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${PROCESSOR})
set(musl $ENV{MODEMD_MUSL})
if(NOT musl)
    set(cache $ENV{XDG_CACHE_HOME})
    if(NOT cache)
        set(cache $ENV{HOME}/.cache)
    endif()
    set(musl ${cache}/modemd/musl-0.11.0)
endif()
set(CMAKE_CXX_COMPILER ${musl}/bin/${TRIPLE}-c++)
set(CMAKE_AR ${musl}/bin/musl-ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${musl}/bin/musl-ranlib CACHE FILEPATH "")
# Every way to link wants libraries of its own, compiled on the first use: make all programs alike,
# and the compiler checks none.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Os")
if(NOT DEFINED MODEMD_LTO OR MODEMD_LTO)
    string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -flto")
endif()
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)  # this compiler makes none
if(QEMU)
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${QEMU}-static)
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE NEVER)

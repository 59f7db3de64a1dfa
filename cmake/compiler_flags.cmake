# Every target of the project links modemd_warnings; what is installed links modemd_hardening, too.
# Optimised builds (Release, MinSizeRel) are hardened; MinSizeRel gives up what only size pays for.
include(CheckCXXCompilerFlag)

add_library(modemd_warnings INTERFACE)
target_compile_options(modemd_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(MODEMD_WERROR)
    target_compile_options(modemd_warnings INTERFACE -Werror)
endif()

# Sizes and times in 64 bits: a 32-bit C library needs to be told, by all who share its structures.
add_library(modemd_64_bits INTERFACE)
target_compile_definitions(modemd_64_bits INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

# A package's bytes do not depend on where it was built.
if(MODEMD_PACKAGE)
    add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
endif()

add_library(modemd_hardening INTERFACE)

# Flags that not every processor's compiler knows. A warning counts as a refusal.
function(add_if_known flag name)
    set(CMAKE_REQUIRED_FLAGS -Werror)
    check_cxx_compiler_flag(${flag} ${name})
    if(${name})
        target_compile_options(modemd_hardening INTERFACE ${flag})
    endif()
endfunction()

if(MODEMD_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer -g -O1)
    add_link_options(-fsanitize=address,undefined)
elseif(MODEMD_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic -O0 -g)
    add_link_options(--coverage)
elseif(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel)$")
    target_compile_options(modemd_hardening INTERFACE
        -fPIE -fstack-protector-strong -ffunction-sections -fdata-sections
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    add_if_known(-fstack-clash-protection MODEMD_KNOWS_STACK_CLASH_PROTECTION)
    target_link_options(modemd_hardening INTERFACE
        -Wl,-z,relro,-z,now -Wl,-z,noexecstack -Wl,--gc-sections -Wl,--as-needed)
endif()

# How the programs of a router are linked.
add_library(modemd_linked INTERFACE)
if(MODEMD_STATIC STREQUAL "ALL")
    target_link_options(modemd_linked INTERFACE ${MODEMD_STATIC_FLAGS})
elseif(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel)$")
    target_link_options(modemd_linked INTERFACE -pie)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
    target_link_options(modemd_linked INTERFACE -s)
endif()
if(MODEMD_STATIC STREQUAL "CXX")
    target_link_options(modemd_linked INTERFACE -static-libstdc++ -static-libgcc)
endif()
if(MODEMD_STATIC)
    target_sources(modemd_linked INTERFACE "${CMAKE_SOURCE_DIR}/cmake/plain_names.cpp")
endif()

# The small daemon is optimised as a whole, stripped, and built without tables for exceptions: it
# catches none, so one ends it with or without them.
add_library(modemd_small INTERFACE)
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
    set(MODEMD_SMALL ON)
    set(small -fno-exceptions -fno-rtti -fno-unwind-tables -fno-asynchronous-unwind-tables)
    if(NOT DEFINED MODEMD_LTO OR MODEMD_LTO)
        list(APPEND small -flto)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        list(APPEND small -flto-partition=one)
    endif()
    target_compile_options(modemd_small INTERFACE ${small})
    target_link_options(modemd_small INTERFACE ${small} -Os -s)
    # The linker that comes with Clang takes such a script beside its own.
    if(MODEMD_STATIC STREQUAL "ALL" AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_link_options(modemd_small INTERFACE -Wl,--no-eh-frame-hdr
            "-Wl,-T,${CMAKE_SOURCE_DIR}/cmake/without_unwind_tables.ld")
    endif()
endif()

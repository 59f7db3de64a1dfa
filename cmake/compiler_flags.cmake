# Every target of the project links one of these two interface libraries:
# modemd_warnings (all code) and modemd_hardening (what is installed).

add_library(modemd_warnings INTERFACE)
target_compile_options(modemd_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(MODEMD_WERROR)
    target_compile_options(modemd_warnings INTERFACE -Werror)
endif()

add_library(modemd_hardening INTERFACE)
if(MODEMD_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer -g -O1)
    add_link_options(-fsanitize=address,undefined)
elseif(MODEMD_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic -O0 -g)
    add_link_options(--coverage)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(modemd_hardening INTERFACE
        -fPIE -fstack-protector-strong -fstack-clash-protection
        -ffunction-sections -fdata-sections
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    target_link_options(modemd_hardening INTERFACE
        -pie -Wl,-z,relro,-z,now -Wl,-z,noexecstack -Wl,--gc-sections -Wl,--as-needed)
endif()

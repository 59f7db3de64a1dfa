# Compiles through ccache where it is installed. Another launcher that was asked for stays. The test
# programs' precompiled headers are no reason for it to pass a file by: they hold no macro that
# differs from build to build.
find_program(MODEMD_CCACHE ccache)
mark_as_advanced(MODEMD_CCACHE)
if(MODEMD_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${MODEMD_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-fpch-preprocess)
    endif()
endif()

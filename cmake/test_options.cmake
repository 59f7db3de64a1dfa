# GoogleTest, and what every test is built with.

if(CMAKE_CROSSCOMPILING)
    include(googletest_from_source)
else()
    find_package(GTest REQUIRED)
endif()

# Quick to compile, small, readable in a debugger. Set behind the flags of the build type, so that
# it wins; without optimisation there is nothing for the hardening to hold on to.
add_library(test_options INTERFACE)
target_link_libraries(test_options INTERFACE modemd_warnings)
# The simulated time is not judged itself, and has years to pass.
add_library(rig_options INTERFACE)
target_link_libraries(rig_options INTERFACE modemd_warnings)
if(NOT MODEMD_COVERAGE)
    target_compile_options(test_options INTERFACE -O0 -g1 -UNDEBUG -U_FORTIFY_SOURCE)
    target_compile_options(rig_options INTERFACE -O1 -g1 -UNDEBUG)
endif()

include(discover_cases)

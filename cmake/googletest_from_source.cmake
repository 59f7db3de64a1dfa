# GoogleTest for another processor, from the sources in Debian's package googletest.
set(GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Where googletest/ and googlemock/ are")
find_package(Threads REQUIRED)

foreach(name test mock)
    set(folder "${GOOGLETEST_SOURCE}/google${name}")
    set(library g${name})
    add_library(${library} STATIC EXCLUDE_FROM_ALL "${folder}/src/${library}-all.cc")
    target_include_directories(${library} PRIVATE "${folder}")
    target_include_directories(${library} SYSTEM PUBLIC "${folder}/include")
    add_library(GTest::${library} ALIAS ${library})
endforeach()
target_link_libraries(gtest PUBLIC Threads::Threads)
target_link_libraries(gmock PUBLIC gtest)

add_library(gtest_main STATIC EXCLUDE_FROM_ALL
    "${GOOGLETEST_SOURCE}/googletest/src/gtest_main.cc")
target_link_libraries(gtest_main PUBLIC gtest)
add_library(GTest::gtest_main ALIAS gtest_main)

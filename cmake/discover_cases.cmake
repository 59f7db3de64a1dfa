# Makes each case of a GoogleTest program a test of CTest, named PROGRAM.SUITE.CASE, with the label
# LABEL. The program is asked for its cases when CTest starts, not when it is built: so a build
# runs nothing, and a program that was changed is asked again.

include(GoogleTest)

function(discover_cases program label)
    gtest_discover_tests(${program}
        TEST_PREFIX "${program}."
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 300
        # 77: there is no private root on this machine, see gear/rig/private_root.h.
        PROPERTIES LABELS "${label}" SKIP_RETURN_CODE 77)
endfunction()

# GoogleTest from the distribution's sources, so that it has the library's word size, and the one
# way to add a test program.

add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

# GoogleTest's headers, compiled once for all test programs: they take longer than most tests.
add_executable(pagerfwd_test_headers EXCLUDE_FROM_ALL ${CMAKE_CURRENT_LIST_DIR}/test_headers.cpp)
target_link_libraries(pagerfwd_test_headers PRIVATE pagerfwd_compile pagerfwd_large_files gmock)
target_precompile_headers(pagerfwd_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

# A program a folder, or part of one: few and large ones take less time to make. With PAGERFWD_UNITY
# eight of its files are one for the compiler, so names in their unnamed namespaces differ.
#
# Every test program runs on the simulated lines and the virtual clock of sim/, which it links.
# ALONE: its tests have the machine to themselves. Two threads of the program under test begin at
# once there, and what is expected is what they do when neither has to wait for a processor.
# SUMMER: its tests run a second time, in a zone that has summer time (tests/support/zone.h); not
# under a sanitizer, which finds nothing else there.
# REAL: neither simulated lines nor virtual clock, for tests with a server that knows none.
# LONG: begun before the others, so that none is left alone at the end.
# PARTS: so many runs side by side, each of a part of its tests: it takes longer than all others.
function(pagerfwd_test name)
    cmake_parse_arguments(ARG "ALONE;SUMMER;REAL;LONG" "PARTS" "SOURCES;LINKS" ${ARGN})
    set(simulation -Wl,--no-as-needed pagersim_preload -Wl,--as-needed)
    if(ARG_REAL)
        set(simulation)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE pagerfwd_compile pagerfwd_large_files
                                          ${simulation}
                                          ${ARG_LINKS} gmock_main)
    target_precompile_headers(${name} REUSE_FROM pagerfwd_test_headers)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ${PAGERFWD_UNITY})
    # The program whole, not each of its tests: most of them take less time than its start.
    set(runs ${name})
    if(ARG_PARTS)
        set(runs)
        foreach(part RANGE 1 ${ARG_PARTS})
            math(EXPR index "${part} - 1")
            pagerfwd_test_run(${name}_${part} ${name} GTEST_TOTAL_SHARDS=${ARG_PARTS}
                              GTEST_SHARD_INDEX=${index})
            list(APPEND runs ${name}_${part})
        endforeach()
    else()
        pagerfwd_test_run(${name} ${name})
    endif()
    set_tests_properties(${runs} PROPERTIES RUN_SERIAL ${ARG_ALONE})
    if(ARG_LONG)
        set_tests_properties(${runs} PROPERTIES COST 100)
    endif()
    if(ARG_SUMMER AND NOT PAGERFWD_SANITIZE)
        pagerfwd_test_run(${name}_in_summer_zone ${name}
                          PAGERFWD_TEST_ZONE=GMT0BST,M3.5.0/1,M10.5.0)
    endif()
endfunction()

# A run of a test program; what follows is of its environment.
function(pagerfwd_test_run run program)
    add_test(NAME ${run} COMMAND ${program} --gtest_brief=1)
    set(environment ${ARGN})
    if(PAGERFWD_SANITIZE STREQUAL "thread")
        # It lets each process sleep for a second at its end, by a call that no simulation knows.
        list(APPEND environment TSAN_OPTIONS=atexit_sleep_ms=0)
    endif()
    set_tests_properties(${run} PROPERTIES TIMEOUT 1800 ENVIRONMENT "${environment}")
endfunction()

# How everything here is compiled, and the two shapes of a target: a layer of the library, a program.

set(PAGERFWD_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
option(PAGERFWD_SANITIZE_TESTS "Sanitize the tests' own code, too" ON)
option(PAGERFWD_FUZZ "Build tests/fuzz in the place of the other tests; needs clang" OFF)

add_library(pagerfwd_compile INTERFACE)
target_compile_options(pagerfwd_compile INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Quoted includes start at the root. Not -I: the C library's own <linux/...> would take ours.
    "SHELL:-iquote ${CMAKE_SOURCE_DIR}")
target_include_directories(pagerfwd_compile INTERFACE ${CMAKE_SOURCE_DIR}/include)

find_package(Threads REQUIRED)
target_link_libraries(pagerfwd_compile INTERFACE Threads::Threads)

# For the programs. File systems of today have inode numbers and sizes of 64 bits: without this, stat
# fails there in a program of 32 bits. The library keeps the types that its interface was made with.
add_library(pagerfwd_large_files INTERFACE)
target_compile_definitions(pagerfwd_large_files INTERFACE _FILE_OFFSET_BITS=64)

# Lines in a stack trace are enough but for a debugger, and take half the time to compile.
add_compile_options($<$<CONFIG:RelWithDebInfo>:-g1>)
if(PAGERFWD_SANITIZE)
    add_compile_options(-fsanitize=${PAGERFWD_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer -g1)
    if(PAGERFWD_SANITIZE STREQUAL "thread")
        # It doesn't know fences, and says so of Boost's, which stand beside a mutex each.
        add_compile_options(-Wno-tsan)
    endif()
    add_link_options(-fsanitize=${PAGERFWD_SANITIZE})
endif()

# Files that take their time for what they include are compiled several at once: tests and the
# command line, a third of the time. Tools that look at one file have it off.
option(PAGERFWD_UNITY "Compile several files at once where that saves much" ON)

# Where the distribution keeps its libraries of our word size.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(PAGERFWD_LIBRARY_FOLDER i386-linux-gnu)
else()
    set(PAGERFWD_LIBRARY_FOLDER x86_64-linux-gnu)
endif()

option(PAGERFWD_COVERAGE "Count which lines of library and host run" OFF)
if(PAGERFWD_COVERAGE)
    add_link_options(--coverage)
endif()

# What is counted of.
function(pagerfwd_counted)
    if(PAGERFWD_COVERAGE)
        foreach(target ${ARGN})
            target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
        endforeach()
    endif()
endfunction()

# A layer of libPagerFwd.so, as objects: the library and the tests link the same ones.
function(pagerfwd_layer name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} OBJECT ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${name} PUBLIC pagerfwd_compile ${ARG_USES})
    pagerfwd_counted(${name})
endfunction()

# The system's hashes of passwords, for tokens. For 32 bits the distribution has the run-time library
# but no link of the name that is looked for, so it is linked by file name, with the ordinary header.

add_library(pagerfwd_crypt INTERFACE)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    find_file(CRYPT_32_BIT libcrypt.so.1 PATHS /usr/lib/i386-linux-gnu NO_DEFAULT_PATH REQUIRED)
    target_link_libraries(pagerfwd_crypt INTERFACE ${CRYPT_32_BIT})
else()
    target_link_libraries(pagerfwd_crypt INTERFACE crypt)
endif()

# SQLite for the host. For 32 bits the distribution has the run-time library but no link of the
# name that find_package looks for, so it is linked by file name, with the ordinary header.

add_library(pagerfwd_sqlite INTERFACE)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    find_file(SQLITE_32_BIT libsqlite3.so.0 PATHS /usr/lib/i386-linux-gnu NO_DEFAULT_PATH REQUIRED)
    find_path(SQLITE_HEADER_DIR sqlite3.h REQUIRED)
    target_link_libraries(pagerfwd_sqlite INTERFACE ${SQLITE_32_BIT})
else()
    find_package(SQLite3 REQUIRED)
    target_link_libraries(pagerfwd_sqlite INTERFACE SQLite::SQLite3)
endif()

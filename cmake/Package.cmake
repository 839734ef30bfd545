# Debian packages of what Install.cmake lays out, made by scripts/package: a package a component.

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
    set(word_size 32)
else()
    set(word_size 64)
endif()
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library dev host simulator)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "PagerFwd maintainers <maintainers@pagerfwd.example>")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(this_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libpagerfwd)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "library that forwards alarms to pagers over modems
A service loads libPagerFwd.so and gives it alarms. The library keeps a page
for each pager until it is delivered, acknowledged or given up, and sends it
by a Hayes modem with TAP, UCP, a plain dialogue or NTT digits. It reads and
writes the tables of the service that loads it.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libpagerfwd-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libpagerfwd ${this_version}")
set(CPACK_COMPONENT_DEV_DESCRIPTION "library that forwards alarms to pagers - development files
Headers of libPagerFwd.so and of the functions that a service supplies for
it, for use with pkg-config and CMake.")

set(CPACK_DEBIAN_HOST_PACKAGE_NAME pagerfwd)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS
    "libpagerfwd ${this_version}, systemd | systemd-standalone-sysusers")
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS pagersim)
set(CPACK_DEBIAN_HOST_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst
    ${PROJECT_SOURCE_DIR}/packaging/debian/prerm
    ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_COMPONENT_HOST_DESCRIPTION "pages people about alarms, over modems
A service with a command line that takes alarms, finds the pagers and mobile
phones that they concern, minds the hours of each, and sends the pages by
modem until somebody acknowledges. Ports, pagers, hours and routes stand in a
site file; alarms and pages are kept in a database.")

set(CPACK_DEBIAN_SIMULATOR_PACKAGE_NAME pagersim)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_ENHANCES pagerfwd)
set(CPACK_COMPONENT_SIMULATOR_DESCRIPTION "simulated modems and paging centres under a virtual clock
Runs a ${word_size}-bit program, such as pagerfwd, on simulated serial lines: Hayes
modems, and TAP, UCP, plain and NTT paging centres that behave well or
badly. Waiting takes no real time. Reports what each centre has understood.")

# What Debian wants beside what is installed anywhere.
file(READ CHANGELOG.md changes)
string(FIND "${changes}" "## ${PROJECT_VERSION}" entry)
if(entry EQUAL -1)
    message(FATAL_ERROR "CHANGELOG.md has no entry for ${PROJECT_VERSION}")
endif()
string(TIMESTAMP release_date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH, if set
configure_file(packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/changelog)
compressed(CHANGELOG.md changelog.gz)
compressed(${PROJECT_BINARY_DIR}/changelog changelog.Debian.gz)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    install(FILES packaging/debian/copyright ${PROJECT_BINARY_DIR}/changelog.gz
                  ${PROJECT_BINARY_DIR}/changelog.Debian.gz
            DESTINATION ${PAGERFWD_DOC_ROOT}/${package} COMPONENT ${component})
    if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/debian/${package}.lintian-overrides)
        install(FILES packaging/debian/${package}.lintian-overrides RENAME ${package}
                DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
                COMPONENT ${component})
    endif()
endforeach()

include(CPack)

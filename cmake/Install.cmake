# Where everything goes that is installed. Four components, one for each Debian package: `library`,
# `dev` for integrators, `host` and `simulator`. Tested by tests/package.

option(PAGERFWD_DEBIAN "Lay out for Debian packages, which CPack makes" OFF)

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The preload is no library to link with, so it lies in a folder of its own.
set(PAGERSIM_LIBRARY_FOLDER ${CMAKE_INSTALL_LIBDIR}/pagersim)
set(PAGERFWD_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/PagerFwd)
set(PAGERFWD_DOC_ROOT ${CMAKE_INSTALL_DATAROOTDIR}/doc)

function(install_pagerfwd)
    install_library()
    install_for_integrators()
    install_host()
    install_simulator()
endfunction()

# No SOVERSION: services load the plain name, libPagerFwd.so, with dlopen and never see another. A
# version in the file name could not keep them from a library that doesn't suit them, so there is
# one file under that name, and its five functions don't change. A different interface would be a
# library of a different name.
function(install_library)
    target_include_directories(PagerFwd INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    install(TARGETS PagerFwd EXPORT PagerFwd
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library)
endfunction()

# Headers, and how pkg-config and CMake find them. Neither knows the prefix: both compute it from
# where they lie, so that the whole can be moved.
function(install_for_integrators)
    install(DIRECTORY include/pagerfwd DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
            FILES_MATCHING PATTERN "*.h")
    install_man(libPagerFwd.3 dev)
    install(DIRECTORY examples/host DESTINATION ${PAGERFWD_DOC_ROOT}/libpagerfwd-dev/examples
            COMPONENT dev)

    set(pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    string(REGEX REPLACE "[^/]+" ".." PAGERFWD_UP ${pkgconfig})
    configure_file(packaging/pagerfwd.pc.in ${PROJECT_BINARY_DIR}/pagerfwd.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/pagerfwd.pc DESTINATION ${pkgconfig} COMPONENT dev)

    configure_package_config_file(packaging/PagerFwdConfig.cmake.in
        ${PROJECT_BINARY_DIR}/PagerFwdConfig.cmake INSTALL_DESTINATION ${PAGERFWD_CMAKE_FOLDER}
        NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/PagerFwdConfigVersion.cmake
                                     COMPATIBILITY SameMajorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/PagerFwdConfig.cmake
                  ${PROJECT_BINARY_DIR}/PagerFwdConfigVersion.cmake
            DESTINATION ${PAGERFWD_CMAKE_FOLDER} COMPONENT dev)
    install(EXPORT PagerFwd FILE PagerFwdTargets.cmake NAMESPACE PagerFwd::
            DESTINATION ${PAGERFWD_CMAKE_FOLDER} COMPONENT dev)
endfunction()

function(install_host)
    install(TARGETS pagerfwd COMPONENT host)
    install_man(pagerfwd.1 host)
    install_man(pagerfwd-web.1 host)
    install(DIRECTORY docs/ DESTINATION ${PAGERFWD_DOC_ROOT}/pagerfwd COMPONENT host
            PATTERN man EXCLUDE)
    install(FILES examples/site.toml DESTINATION ${PAGERFWD_DOC_ROOT}/pagerfwd/examples
            COMPONENT host)
    install(PROGRAMS examples/notify/icinga examples/notify/mail examples/notify/log
            DESTINATION ${PAGERFWD_DOC_ROOT}/pagerfwd/examples/notify COMPONENT host)
    install(PROGRAMS examples/monitoring/mail examples/monitoring/notify
                     examples/monitoring/rsyslog examples/monitoring/snmptrap
            DESTINATION ${PAGERFWD_DOC_ROOT}/pagerfwd/examples/monitoring COMPONENT host)
    install(FILES examples/monitoring/alertmanager.yml examples/monitoring/icinga2.conf
                  examples/monitoring/nagios.cfg examples/monitoring/nginx.conf
                  examples/monitoring/rsyslog.conf examples/monitoring/snmptrapd.conf
            DESTINATION ${PAGERFWD_DOC_ROOT}/pagerfwd/examples/monitoring COMPONENT host)
    install(FILES packaging/78-pagerfwd.rules DESTINATION lib/udev/rules.d COMPONENT host)
    install(FILES packaging/pagerfwd.sysusers DESTINATION lib/sysusers.d RENAME pagerfwd.conf
            COMPONENT host)
    install_unit(pagerfwd.service)
    install_unit(pagerfwd-web.service)
    install(FILES packaging/pagerfwd-snpp.socket packaging/pagerfwd-web.socket
            DESTINATION lib/systemd/system COMPONENT host)
    install(FILES host/completion/pagerfwd.bash RENAME pagerfwd COMPONENT host
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
endfunction()

# A unit names program and library by the whole path, which is known only when the prefix is.
function(install_unit name)
    install(CODE "
        file(READ \"${PROJECT_SOURCE_DIR}/packaging/${name}\" unit)
        string(REPLACE /usr/bin/pagerfwd \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/pagerfwd\"
               unit \"\${unit}\")
        string(REPLACE /usr/lib/libPagerFwd.so
               \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libPagerFwd.so\" unit \"\${unit}\")
        file(WRITE \"${PROJECT_BINARY_DIR}/${name}\" \"\${unit}\")"
        COMPONENT host)
    install(FILES ${PROJECT_BINARY_DIR}/${name} DESTINATION lib/systemd/system
            COMPONENT host)
endfunction()

function(install_simulator)
    install(TARGETS pagersim COMPONENT simulator)
    install(TARGETS pagersim_preload LIBRARY DESTINATION ${PAGERSIM_LIBRARY_FOLDER}
            COMPONENT simulator)
    # A Debian package holds files of one word size.
    if(TARGET pagersim_preload_other AND NOT PAGERFWD_DEBIAN)
        install(TARGETS pagersim_preload_other LIBRARY DESTINATION ${PAGERSIM_LIBRARY_FOLDER}
                COMPONENT simulator)
    endif()
    install_man(pagersim.1 simulator)
    install(FILES examples/exchange.toml DESTINATION ${PAGERFWD_DOC_ROOT}/pagersim/examples
            COMPONENT simulator)
endfunction()

# A page of docs/man, compressed as manuals are.
function(install_man page component)
    string(REGEX REPLACE ".*\\." "" section ${page})
    compressed(docs/man/${page} ${page}.gz)
    install(FILES ${PROJECT_BINARY_DIR}/${page}.gz COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endfunction()

# A compressed copy in the build folder, the same for the same text.
function(compressed source copy)
    find_program(GZIP gzip REQUIRED)
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    execute_process(COMMAND ${GZIP} -9nc ${source} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                    OUTPUT_FILE ${PROJECT_BINARY_DIR}/${copy} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

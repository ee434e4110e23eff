# `cmake --install`: the library, what one compiles against it with, and the tool.
#
# Three components: library (what a program needs to run: nothing, if the library is static), dev (headers, CMake
# package, pkg-config file, and what the linker wants), tools. find_package(korvan_relay) knows two: relay_msg and
# tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/korvan_relay)
set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/korvan_relay) # in it, paths are as in the source tree

# ---- relay_msg ----
install(TARGETS relay_msg EXPORT relay_msg
    LIBRARY COMPONENT library NAMELINK_COMPONENT dev
    RUNTIME COMPONENT library
    ARCHIVE COMPONENT dev
    FILE_SET HEADERS DESTINATION ${include_dir} COMPONENT dev)
install(EXPORT relay_msg NAMESPACE korvan:: DESTINATION ${package_dir} COMPONENT dev
    FILE korvan_relay-relay_msg.cmake)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/korvan_relay-config.cmake.in korvan_relay-config.cmake
    INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
if(PROJECT_VERSION_MAJOR EQUAL 0)
    set(compatibility SameMinorVersion)
else()
    set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(korvan_relay-config-version.cmake COMPATIBILITY ${compatibility})

# The pkg-config file finds its prefix from its own place, so that the whole can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH up ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/korvan_relay.pc.in korvan_relay.pc @ONLY)

install(FILES
        ${CMAKE_CURRENT_BINARY_DIR}/korvan_relay-config.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/korvan_relay-config-version.cmake
    DESTINATION ${package_dir} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korvan_relay.pc DESTINATION ${pkgconfig_dir} COMPONENT dev)

# ---- tools ----
if(TARGET relaymsg)
    file(RELATIVE_PATH to_library ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    if(UNIX AND NOT APPLE)
        set_target_properties(relaymsg PROPERTIES INSTALL_RPATH $ORIGIN/${to_library})
    endif()
    install(TARGETS relaymsg EXPORT tools RUNTIME COMPONENT tools)
    install(EXPORT tools NAMESPACE korvan:: DESTINATION ${package_dir} COMPONENT tools
        FILE korvan_relay-tools.cmake)

    file(GLOB man_pages ${PROJECT_SOURCE_DIR}/tools/relaymsg/man/*.1)
    install(FILES ${man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    file(GLOB dissectors ${PROJECT_SOURCE_DIR}/tools/wireshark/*.lua)
    install(FILES ${dissectors} DESTINATION ${CMAKE_INSTALL_DATADIR}/korvan_relay/wireshark COMPONENT tools)
endif()

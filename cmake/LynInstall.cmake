# SPDX-License-Identifier: Apache-2.0
#
# Component runtime: what a program needs to run. Component dev: what it needs to be built.
include(CMakePackageConfigHelpers)

set(lyn_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/lyn_service")
set_target_properties(lyn_service PROPERTIES EXPORT_NAME service)

install(TARGETS lyn_service EXPORT lyn_serviceTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS lynctl RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
install(FILES docs/lynctl.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT runtime)
install(DIRECTORY include/ platform/include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT dev
    FILES_MATCHING PATTERN "*.h")

if(LYN_BUNDLED_PLATFORMS)
    set_target_properties(lyn_platform_simulator PROPERTIES EXPORT_NAME simulator)
    install(TARGETS lyn_platform_simulator EXPORT lyn_serviceTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/lyn/simulator" COMPONENT runtime NAMELINK_COMPONENT dev
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
    install(DIRECTORY platform/simulator/include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT dev
        FILES_MATCHING PATTERN "*.h")
    install(FILES platform/simulator/default_scenario.json platform/simulator/scenario.schema.json
        DESTINATION "${CMAKE_INSTALL_DATADIR}/lyn_service" COMPONENT runtime)
    install(DIRECTORY platform/simulator/scenarios DESTINATION "${CMAKE_INSTALL_DATADIR}/lyn_service"
        COMPONENT runtime FILES_MATCHING PATTERN "*.json")

    # Opened at run time, so nobody links to it.
    install(TARGETS lyn_platform_linux
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/lyn/linux" COMPONENT runtime NAMELINK_SKIP)
    install(TARGETS lyn-advertiser RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
    install(FILES packaging/advertiser.json DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples" COMPONENT runtime)
    configure_file(packaging/systemd/lyn-advertiser.service.in "${PROJECT_BINARY_DIR}/lyn-advertiser.service" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/lyn-advertiser.service" DESTINATION lib/systemd/system COMPONENT runtime)
endif()

install(EXPORT lyn_serviceTargets NAMESPACE lyn:: DESTINATION "${lyn_cmake_dir}" COMPONENT dev)
configure_package_config_file(packaging/lyn_serviceConfig.cmake.in "${PROJECT_BINARY_DIR}/lyn_serviceConfig.cmake"
    INSTALL_DESTINATION "${lyn_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/lyn_serviceConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/lyn_serviceConfig.cmake" "${PROJECT_BINARY_DIR}/lyn_serviceConfigVersion.cmake"
    DESTINATION "${lyn_cmake_dir}" COMPONENT dev)

# Relative to itself, so that the installed tree may be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    OUTPUT_VARIABLE lyn_prefix_from_pc)
configure_file(packaging/lyn_service.pc.in "${PROJECT_BINARY_DIR}/lyn_service.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/lyn_service.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)

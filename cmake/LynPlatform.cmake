# SPDX-License-Identifier: Apache-2.0
#
# lyn_platform_headers: the seam, for those who call it and those who implement it.
# lyn_platform: what the library is linked to. The loader may find another liblyn_platform.so.0 at run time.
add_library(lyn_platform_headers INTERFACE)
add_library(lyn_platform INTERFACE)

if(LYN_PLATFORM_INCLUDE_DIR OR LYN_PLATFORM_LIBRARIES)
    if(NOT LYN_PLATFORM_INCLUDE_DIR OR NOT LYN_PLATFORM_LIBRARIES)
        message(FATAL_ERROR "LYN_PLATFORM_INCLUDE_DIR and LYN_PLATFORM_LIBRARIES are given together or not at all")
    endif()
    if(LYN_BUILD_TESTS)
        message(FATAL_ERROR "The tests run on the simulated TV: LYN_BUILD_TESTS needs the bundled platforms")
    endif()
    set(LYN_BUNDLED_PLATFORMS OFF)
    target_include_directories(lyn_platform_headers INTERFACE "${LYN_PLATFORM_INCLUDE_DIR}")
    target_link_libraries(lyn_platform INTERFACE ${LYN_PLATFORM_LIBRARIES})
else()
    set(LYN_BUNDLED_PLATFORMS ON)
    target_include_directories(lyn_platform_headers INTERFACE "${PROJECT_SOURCE_DIR}/platform/include")
    add_subdirectory(platform)
    target_link_libraries(lyn_platform INTERFACE $<LINK_ONLY:lyn_platform_simulator>)
endif()

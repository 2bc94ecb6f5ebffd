# Builds for macOS with zig's clang on another system. Wants MACOS_ZIG (the compiler's path),
# MACOS_ARCH (arm64 or x86_64) and MACOS_PREFIX (where the cross-compiled libraries are installed).
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MACOS_ZIG MACOS_ARCH MACOS_PREFIX)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR "${MACOS_ARCH}")
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")

# With the oldest systems that the programs are for, which undefined_symbols.py knows as well.
if(MACOS_ARCH STREQUAL "arm64")
  set(target aarch64-macos.11.0)
else()
  set(target x86_64-macos.10.13)
endif()
set(CMAKE_C_COMPILER "${MACOS_ZIG}" cc -target ${target})
set(CMAKE_CXX_COMPILER "${MACOS_ZIG}" c++ -target ${target})

# What stands for the frameworks: a header, and the list of their functions for the linker. The
# system's headers say since when each function is there.
set(CMAKE_CXX_FLAGS_INIT
  "-I${CMAKE_CURRENT_LIST_DIR}/include -F${CMAKE_CURRENT_LIST_DIR}/frameworks -Werror=unguarded-availability")

# zig's ar and ranlib are subcommands of one program, which CMAKE_AR cannot express.
foreach(language C CXX)
  set(CMAKE_${language}_ARCHIVE_CREATE "\"${MACOS_ZIG}\" ar qc <TARGET> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_APPEND "\"${MACOS_ZIG}\" ar q <TARGET> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_FINISH "\"${MACOS_ZIG}\" ranlib <TARGET>")
endforeach()
# Only used to rewrite library paths on installation, which a check does not do.
set(CMAKE_INSTALL_NAME_TOOL true)

set(CMAKE_FIND_ROOT_PATH "${MACOS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test programs are asked for their tests when these are run, not when they have been built.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)

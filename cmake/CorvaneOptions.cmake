# Compiler settings that every target of the project shares through corvane_options.
add_library(corvane_options INTERFACE)
target_compile_features(corvane_options INTERFACE cxx_std_20)
target_include_directories(corvane_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_options(corvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${CORVANE_WERROR}>:-Werror>
  -ffunction-sections -fdata-sections)
if(NOT APPLE)
  target_link_options(corvane_options INTERFACE -Wl,--gc-sections)
endif()
if(CORVANE_SANITIZE)
  target_compile_options(corvane_options INTERFACE
    -fsanitize=${CORVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(corvane_options INTERFACE -fsanitize=${CORVANE_SANITIZE})
endif()
if(CORVANE_FUZZ)
  target_compile_options(corvane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# corvane_library(NAME SOURCES... [LINK libraries...]): one static library of the program.
function(corvane_library name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC corvane_options ${ARG_LINK})
  target_compile_options(${name} PRIVATE ${CORVANE_LTO_COMPILE})
endfunction()

# The libraries carry ordinary code as well, so that only the installed programs are optimised when
# they are linked, and tests link quickly. Calls of shared libraries go straight through a table that
# is filled at the start and read-only from then on.
if(CORVANE_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(CORVANE_LTO_COMPILE -flto=auto -ffat-lto-objects -fno-plt)
  set(CORVANE_LTO_LINK -flto=auto -fno-plt)
  if(NOT APPLE)
    list(APPEND CORVANE_LTO_LINK -Wl,-z,relro,-z,now)
  endif()
endif()

# corvane_test(NAME SOURCES... [PREFIX text] [LINK libraries...]): one GoogleTest program, each test
# known to CTest, by its name behind the prefix.
function(corvane_test name)
  set(sanitized false)
  if(CORVANE_SANITIZE)
    set(sanitized true)
  endif()
  cmake_parse_arguments(ARG "" "PREFIX" "LINK" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE corvane_options ${ARG_LINK} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE CORVANE_SANITIZED=${sanitized})
  gtest_discover_tests(${name} TEST_PREFIX "${ARG_PREFIX}" DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300)
endfunction()

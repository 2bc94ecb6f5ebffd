# Compiler settings that every target of the project shares through corvane_options.
add_library(corvane_options INTERFACE)
target_compile_features(corvane_options INTERFACE cxx_std_20)
target_include_directories(corvane_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
# -Wrestrict of gcc 12 takes "text" + std::string() for overlapping copies (gcc.gnu.org/PR105651).
target_compile_options(corvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,12>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
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

# What makes a mistake in the installed programs harder to exploit. It is for optimised builds without
# sanitizers, which look for the same and more; the tests themselves do without. Older compilers and
# C libraries take _FORTIFY_SOURCE=3 for 2. libstdc++ checks the indices and iterators of its own types.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT CORVANE_SANITIZE AND NOT CORVANE_FUZZ)
  set(CORVANE_HARDEN_COMPILE -fstack-protector-strong)
  if(NOT APPLE)
    list(APPEND CORVANE_HARDEN_COMPILE
      -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS -fstack-clash-protection -fPIE)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i.86)$")
      list(APPEND CORVANE_HARDEN_COMPILE -fcf-protection)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
      list(APPEND CORVANE_HARDEN_COMPILE -mbranch-protection=standard)
    endif()
    set(CORVANE_HARDEN_LINK
      -pie -Wl,-z,relro,-z,now -Wl,-z,noexecstack,-z,separate-code)
  endif()
endif()

# corvane_harden(TARGETS...): programs that are installed, and libraries of theirs that
# corvane_library() has not made.
function(corvane_harden)
  foreach(target IN LISTS ARGN)
    target_compile_options(${target} PRIVATE ${CORVANE_HARDEN_COMPILE})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_link_options(${target} PRIVATE ${CORVANE_HARDEN_COMPILE} ${CORVANE_HARDEN_LINK})
    endif()
  endforeach()
endfunction()

# corvane_library(NAME SOURCES... [LINK libraries...]): one static library of the program.
function(corvane_library name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PUBLIC corvane_options ${ARG_LINK})
  target_compile_options(${name} PRIVATE ${CORVANE_LTO_COMPILE})
  corvane_harden(${name})
endfunction()

# The libraries carry ordinary code as well, so that only the installed programs are optimised when
# they are linked, and tests link quickly. Calls of shared libraries go straight through the table
# that is filled at the start.
if(CORVANE_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(CORVANE_LTO_COMPILE -flto=auto -ffat-lto-objects -fno-plt)
  set(CORVANE_LTO_LINK -flto=auto -fno-plt)
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

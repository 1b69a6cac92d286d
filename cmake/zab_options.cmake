# Language level, warnings and the switches that a builder may set. Everything links zab_warnings; nothing sets flags of
# its own elsewhere, except the vector code that needs its contraction off.
option(ZAB_TESTS "Build the tests" ON)
option(ZAB_BENCH "Build the benchmarks" OFF)
option(ZAB_FUZZ "Build the fuzzers (Clang only)" OFF)
option(ZAB_WERROR "Warnings are errors, with the compilers that ./check is tried with" OFF)
# On Windows its types are the system's own, and the library is to be had: there is no other way there.
if(WIN32)
  set(zab_directxtex_default system)
else()
  set(zab_directxtex_default own)
endif()
set(ZAB_DIRECTXTEX ${zab_directxtex_default} CACHE STRING
    "Where the DirectXTex interface comes from: own (platform/directxtex) or system")
set_property(CACHE ZAB_DIRECTXTEX PROPERTY STRINGS own system)
set(ZAB_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them (address,undefined or thread)")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# The same input must give the same bytes on every machine: no fused multiply-add that one has and another has not.
add_compile_options(-ffp-contract=off)

# GCC's unique symbols would keep the plug-in loaded for ever, and its schemas with it.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fno-gnu-unique)
endif()

if(ZAB_SANITIZE)
  add_compile_options(-fsanitize=${ZAB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZAB_SANITIZE})
  # With the checks in between GCC no longer sees what is initialised.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
# Everything that a fuzzer links tells it which ways the input took.
if(ZAB_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ZAB_FUZZ takes Clang and its libFuzzer (Debian: clang, libclang-rt-14-dev)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

add_library(zab_warnings INTERFACE)
target_compile_options(zab_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                                              -Wundef -Wcast-align)
# Every compiler warns of things of its own; none that nobody has tried may stop anyone.
string(REGEX MATCH "^[0-9]+" zab_compiler_release "${CMAKE_CXX_COMPILER_VERSION}")
if(ZAB_WERROR AND "${CMAKE_CXX_COMPILER_ID} ${zab_compiler_release}" MATCHES "^(GNU 12|GNU 14|Clang 14)$")
  target_compile_options(zab_warnings INTERFACE -Werror)
elseif(ZAB_WERROR)
  message(STATUS "Warnings stay warnings: ./check is not tried with ${CMAKE_CXX_COMPILER_ID} ${zab_compiler_release}")
endif()

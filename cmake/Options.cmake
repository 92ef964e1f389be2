option(CORVEL_TESTS "Build the tests" ON)
option(CORVEL_BENCHES "Build the benches" OFF)
option(CORVEL_WERROR "Treat warnings as errors" OFF)
option(CORVEL_FUZZ "Build the fuzz targets (clang only)" OFF)
set(CORVEL_SANITIZE "" CACHE STRING "Sanitizers for everything, such as address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(CORVEL_CCACHE ccache)
if(CORVEL_CCACHE)
  # Every checkout of these sources may use what another has compiled: the cache sees paths from the source folder on.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CORVEL_CCACHE})
endif()

# What every target of ours is compiled with. Who builds on the installed libraries gets the headers' folder and the
# language version alone.
set(ours
  -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
  # A constructor's parameter may have its member's name; clang's plain -Wshadow allows that already.
  $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow>
  # Version 12 takes texts that are put together for copies over themselves.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${CORVEL_WERROR}>:-Werror>)
add_library(corvel_flags INTERFACE)
add_library(morvane::flags ALIAS corvel_flags)
target_include_directories(corvel_flags INTERFACE
  $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/corvel>)
target_compile_features(corvel_flags INTERFACE cxx_std_20)
target_compile_options(corvel_flags INTERFACE "$<BUILD_INTERFACE:${ours}>")
target_compile_definitions(corvel_flags INTERFACE $<BUILD_INTERFACE:CORVEL_VERSION="${PROJECT_VERSION}">)
if(CORVEL_SANITIZE)
  add_compile_options(-fsanitize=${CORVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # The checks make the compiler see values that are never read.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${CORVEL_SANITIZE})
endif()
if(CORVEL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

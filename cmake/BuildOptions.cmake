# Language level, warnings, hardening and sanitizers for every target of the project, and where its programs go.
#
# What is set for the folder holds here and below only. What a program needs that uses the library is in brask_options
# alone, and comes along with the library's targets: no warning flag, no hardening, no link option.
include(CheckPIESupported)

if(PROJECT_IS_TOP_LEVEL)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
  endif()
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  find_program(CCACHE_PROGRAM ccache)
  if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  endif()
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
check_pie_supported(LANGUAGES CXX)

add_library(brask_options INTERFACE)
target_compile_features(brask_options INTERFACE cxx_std_20)
target_include_directories(brask_options INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
# Dumps pass 4 GiB on any platform, and the size of off_t is part of the headers.
target_compile_definitions(brask_options INTERFACE _FILE_OFFSET_BITS=64)

add_compile_options(-Wall -Wextra -fstack-protector-strong)
add_link_options(-Wl,-z,relro,-z,now,--as-needed)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # A false positive of this compiler's on std::string (GCC bug 105651), mended in 13.
  add_compile_options(-Wno-restrict)
endif()

# Source locations in logs, reports and debug information are relative to the repository, so that nothing tells where
# the program was built, and builds in different folders are the same. A compiler cache may have made the paths relative
# to the build folder before the compiler sees them. Of several maps that fit, the last one counts.
cmake_path(RELATIVE_PATH PROJECT_SOURCE_DIR BASE_DIRECTORY "${CMAKE_BINARY_DIR}" OUTPUT_VARIABLE way_to_source)
add_compile_options(
  "-ffile-prefix-map=${CMAKE_BINARY_DIR}=build"
  "-ffile-prefix-map=${way_to_source}/="
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")

if(BRASK_SANITIZERS)
  add_compile_options(-fsanitize=${BRASK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${BRASK_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code makes this compiler see uninitialised values inside its own <regex> and <functional>.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
else()
  # The level is set anew because some compilers predefine another, which would be a warning.
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>" "$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>")
endif()

if(BRASK_COVERAGE)
  add_compile_options(--coverage -fprofile-update=prefer-atomic)
  add_link_options(--coverage)
  # Children that end by _exit have counted, too.
  add_library(brask_coverage STATIC cmake/coverage_exit.cpp)
  target_link_options(brask_coverage INTERFACE -Wl,--wrap=_exit,--undefined=__wrap__exit)
  target_link_libraries(brask_options INTERFACE brask_coverage)
endif()

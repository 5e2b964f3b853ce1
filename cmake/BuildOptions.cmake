# Language level, warnings, hardening and sanitizers, for every target of the project, and where its programs go.
include(CheckPIESupported)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  find_program(CCACHE_PROGRAM ccache)
  if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  endif()
endif()

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
check_pie_supported(LANGUAGES CXX)

add_library(brask_options INTERFACE)
target_compile_features(brask_options INTERFACE cxx_std_20)
target_include_directories(brask_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(brask_options INTERFACE -Wall -Wextra -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # A false positive of this compiler's on std::string (GCC bug 105651), mended in 13.
  target_compile_options(brask_options INTERFACE -Wno-restrict)
endif()
# Dumps pass 4 GiB on any platform.
target_compile_definitions(brask_options INTERFACE _FILE_OFFSET_BITS=64)
target_link_options(brask_options INTERFACE -Wl,-z,relro,-z,now,--as-needed)

if(BRASK_SANITIZERS)
  target_compile_options(brask_options INTERFACE
    -fsanitize=${BRASK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_link_options(brask_options INTERFACE -fsanitize=${BRASK_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code makes this compiler see uninitialised values inside its own <regex> and <functional>.
    target_compile_options(brask_options INTERFACE -Wno-maybe-uninitialized)
  endif()
else()
  # The level is set anew because some compilers predefine another, which would be a warning.
  target_compile_options(brask_options INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>" "$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>")
endif()

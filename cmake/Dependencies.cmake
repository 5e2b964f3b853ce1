# Every third-party library is a Debian package (scripts/setup names them); nothing is downloaded.
# Whoever adds this project to another links its libraries, and those name these.
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)
find_package(PkgConfig REQUIRED)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
find_package(LibXml2 REQUIRED)
find_package(Boost 1.74 CONFIG REQUIRED)
if(BRASK_BUILD_PROGRAMS)
  find_package(Boost 1.74 CONFIG REQUIRED COMPONENTS program_options)
endif()
find_package(nlohmann_json 3 REQUIRED)
pkg_check_modules(LOG4CPP REQUIRED IMPORTED_TARGET GLOBAL log4cpp)

# commons/format.h takes the standard library's <format> where the compiler has it, libfmt where it has not.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS -std=c++20)
check_cxx_source_compiles("#include <format>\nint main() { return std::format(\"{}\", 0).size() != 1; }"
  BRASK_HAVE_STD_FORMAT)
unset(CMAKE_REQUIRED_FLAGS)
add_library(brask_format INTERFACE)
if(NOT BRASK_HAVE_STD_FORMAT)
  find_package(fmt 9 REQUIRED)
  target_link_libraries(brask_format INTERFACE fmt::fmt)
endif()

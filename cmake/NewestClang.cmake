# A toolchain for the fuzz targets: the newest clang that is installed. Below 16 it lacks std::source_location.
foreach(version RANGE 40 16 -1)
  list(APPEND c_names clang-${version})
  list(APPEND cxx_names clang++-${version})
endforeach()
find_program(CMAKE_C_COMPILER NAMES ${c_names} REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${cxx_names} REQUIRED)

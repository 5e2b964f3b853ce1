# The library for other projects, as the component "dev": find_package(brask CONFIG), or pkg-config brask.
include(CMakePackageConfigHelpers)

# From the whole library down. pkg-config hands a linker this order.
set(rooms
  backup_sign_lib brask_commons brask_run brask_xml brask_files brask_panel brask_text brask_crypto brask_log
  brask_process log4cpp_additions brask_errors brask_runtime)
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/brask")
set(archive_folder "${CMAKE_INSTALL_LIBDIR}/brask")
set(header_folder "${CMAKE_INSTALL_INCLUDEDIR}/brask")
set(generated "${PROJECT_BINARY_DIR}/packaging")

install(TARGETS ${rooms} EXPORT brask
  ARCHIVE DESTINATION "${archive_folder}" COMPONENT dev
  FILE_SET HEADERS DESTINATION "${header_folder}" COMPONENT dev)
foreach(usage IN ITEMS options format)
  set_target_properties(brask_${usage} PROPERTIES EXPORT_NAME ${usage})
  install(TARGETS brask_${usage} EXPORT brask)
endforeach()
install(EXPORT brask NAMESPACE brask:: FILE brask-targets.cmake DESTINATION "${package_folder}" COMPONENT dev)

configure_package_config_file(packaging/brask-config.cmake.in "${generated}/brask-config.cmake"
  INSTALL_DESTINATION "${package_folder}" NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${generated}/brask-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${generated}/brask-config.cmake" "${generated}/brask-config-version.cmake"
  DESTINATION "${package_folder}" COMPONENT dev)

set(pkg_config_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH archive_folder BASE_DIRECTORY "${pkg_config_folder}" OUTPUT_VARIABLE way_to_archives)
cmake_path(RELATIVE_PATH header_folder BASE_DIRECTORY "${pkg_config_folder}" OUTPUT_VARIABLE way_to_headers)
set(pkg_config_requires "libcrypto >= 3, libxml-2.0, log4cpp")
set(debian_dependencies "libboost-dev, liblog4cpp5-dev, libssl-dev, libxml2-dev")
if(NOT BRASK_HAVE_STD_FORMAT)
  string(APPEND pkg_config_requires ", fmt")
  string(APPEND debian_dependencies ", libfmt-dev")
endif()
set(pkg_config_libraries)
foreach(room IN LISTS rooms)
  get_target_property(type ${room} TYPE)
  if(NOT type STREQUAL "INTERFACE_LIBRARY")
    string(APPEND pkg_config_libraries " -l${room}")
  endif()
endforeach()
configure_file(packaging/brask.pc.in "${generated}/brask.pc" @ONLY)
install(FILES "${generated}/brask.pc" DESTINATION "${pkg_config_folder}" COMPONENT dev)
# Read by packaging/debian/rules.
file(WRITE "${generated}/debian-dependencies" "${debian_dependencies}")

install(FILES docs/library.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libbrask-dev" COMPONENT dev)
install(DIRECTORY examples/ DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libbrask-dev/examples" COMPONENT dev)

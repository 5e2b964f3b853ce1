# brask_add_room(NAME [SOURCES file…] HEADERS file… [PUBLIC target…] [PRIVATE target…]): a static library of the house,
# or one of headers alone. A room's headers are a file set, so that each is compiled on its own when the tests are built
# (VERIFY_INTERFACE_HEADER_SETS) and so that installing them keeps their folders. Other projects know a room by a name
# without "brask_" and "_lib": brask_errors is brask::errors, backup_sign_lib is brask::backup_sign.
function(brask_add_room name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS;PUBLIC;PRIVATE")
  set(scope PUBLIC)
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_PRIVATE})
  else()
    add_library(${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_sources(${name} ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
  target_link_libraries(${name} ${scope} brask_options ${arg_PUBLIC})

  string(REGEX REPLACE "^brask_|_lib$" "" short_name ${name})
  set_target_properties(${name} PROPERTIES EXPORT_NAME ${short_name})
  add_library(brask::${short_name} ALIAS ${name})
endfunction()

# The site paths: where this program looks on the machine that it runs on. They are compiled in, each into one source
# file, and can't be changed from the environment: the program runs as root, and its caller's environment must not
# choose which helper gets the private key.
#
# The cache holds what somebody chose, and is empty where nobody did. What follows from BRASK_STANDALONE is worked out
# anew each time, so that turning it on or off in an existing build folder takes all three paths along.
set(BRASK_CONF_FILE "" CACHE STRING "Runtime configuration file; empty: /etc/bsa/bsa.conf")
set(BRASK_PRODUCT_ROOT "" CACHE STRING "Compiled default of PRODUCT_ROOT_D; empty: /opt/bsa")
set(BRASK_FEEDBACK_DISABLED_FILE "" CACHE STRING
  "File whose existence turns error reports off; empty: /var/kestrelia/feedback-disabled")

set(standalone_root "${PROJECT_BINARY_DIR}/standalone")

# A standalone build writes to its site paths, so they may not be those of a server. Any other build looks there as root,
# so they may not be in a build folder. The message names a path that was chosen for the other kind of build.
function(brask_site_path variable default)
  set(path "${${variable}}")
  if(path STREQUAL "")
    set(path "${default}")
    if(BRASK_STANDALONE)
      string(PREPEND path "${standalone_root}")
    endif()
  endif()
  cmake_path(NORMAL_PATH path)
  cmake_path(IS_PREFIX standalone_root "${path}" inside)
  cmake_path(IS_ABSOLUTE path absolute)
  if(NOT absolute)
    message(FATAL_ERROR "${variable} is ${path}; it must be an absolute path")
  elseif(BRASK_STANDALONE AND NOT inside)
    message(FATAL_ERROR "${variable} is ${path}, but BRASK_STANDALONE is on, and a standalone build writes below "
      "${standalone_root} only. Take the path away with -U${variable}, or turn BRASK_STANDALONE off.")
  elseif(inside AND NOT BRASK_STANDALONE)
    message(FATAL_ERROR "${variable} is ${path}, which is in the build folder, but BRASK_STANDALONE is off. "
      "Take the path away with -U${variable}, or turn BRASK_STANDALONE on.")
  endif()
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()

brask_site_path(BRASK_CONF_FILE /etc/bsa/bsa.conf)
brask_site_path(BRASK_PRODUCT_ROOT /opt/bsa)
brask_site_path(BRASK_FEEDBACK_DISABLED_FILE /var/kestrelia/feedback-disabled)

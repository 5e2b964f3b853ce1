# The site paths: where this program looks on the machine that it runs on. They are compiled in, each into one source
# file, and can't be changed from the environment: the program runs as root, and its caller's environment must not
# choose which helper gets the private key.
if(BRASK_STANDALONE)
  set(BRASK_STANDALONE_ROOT "${PROJECT_BINARY_DIR}/standalone")
  set(default_conf_file "${BRASK_STANDALONE_ROOT}/etc/bsa/bsa.conf")
  set(default_product_root "${BRASK_STANDALONE_ROOT}/opt/bsa")
  set(default_feedback_disabled_file "${BRASK_STANDALONE_ROOT}/var/kestrelia/feedback-disabled")
else()
  set(default_conf_file "/etc/bsa/bsa.conf")
  set(default_product_root "/opt/bsa")
  set(default_feedback_disabled_file "/var/kestrelia/feedback-disabled")
endif()

set(BRASK_CONF_FILE "${default_conf_file}" CACHE STRING "Runtime configuration file")
set(BRASK_PRODUCT_ROOT "${default_product_root}" CACHE STRING "Compiled default of PRODUCT_ROOT_D")
set(BRASK_FEEDBACK_DISABLED_FILE "${default_feedback_disabled_file}" CACHE STRING
  "File whose existence turns error reports off")

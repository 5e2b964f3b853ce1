# What `cmake --install BUILD` puts where. Without a component, all of it goes below the prefix. What belongs into the
# tree of a panel, at BRASK_PRODUCT_ROOT, has to be asked for by the component's name:
#
#   --component tool      the tool in the panel's place
#   --component product   the stand-in product tree, for a server without a panel (see product/CMakeLists.txt)
#
# The Debian packages (packaging/debian/rules) are made of the same components.
include(GNUInstallDirs)

set(completion_folder "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")

# brask_install_manual(NAME SECTION COMPONENT): the manual page of a program.
function(brask_install_manual name section component)
  install(FILES "${PROJECT_SOURCE_DIR}/man/${name}.${section}"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}" COMPONENT ${component} ${ARGN})
endfunction()

# brask_install_completion(NAME COMPONENT): what bash completes for a program.
function(brask_install_completion name component)
  install(FILES "${PROJECT_SOURCE_DIR}/completion/${name}.bash" RENAME "${name}"
    DESTINATION "${completion_folder}" COMPONENT ${component})
endfunction()

if(BRASK_BUILD_PROGRAMS)
  install(TARGETS backup_sign DESTINATION "${CMAKE_INSTALL_SBINDIR}" COMPONENT sbin)
  install(TARGETS backup_sign DESTINATION "${BRASK_PRODUCT_ROOT}/admin/bin" COMPONENT tool EXCLUDE_FROM_ALL)
  brask_install_manual(backup_sign 8 doc)
  brask_install_completion(backup_sign doc)
  install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/backup-sign" COMPONENT doc
    FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN library.md EXCLUDE)
  install(DIRECTORY packaging/examples DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/backup-sign" COMPONENT doc
    USE_SOURCE_PERMISSIONS)
  install(PROGRAMS scripts/verify-independently DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/backup-sign/examples"
    COMPONENT doc)

  install(TARGETS dumpsig DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT dumpsig)
  brask_install_manual(dumpsig 1 dumpsig)
  brask_install_completion(dumpsig dumpsig)
  install(FILES docs/signed-dump.md docs/at-scale.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/dumpsig" COMPONENT dumpsig)
  install(PROGRAMS scripts/verify-independently DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/dumpsig/examples"
    COMPONENT dumpsig)

  brask_install_manual(backup_restore_helper 8 product EXCLUDE_FROM_ALL)
endif()

include(packaging/Library.cmake)

# Debian packages, by `cpack` in a release build: "backup-sign", the tool, and "backup-sign-product", the minimal product
# tree for machines where no panel provides one. `cmake --install BUILD --component tool` does without a package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME backup-sign)
set(CPACK_PACKAGE_VENDOR "The backup_sign maintainers")
set(CPACK_PACKAGE_CONTACT "The backup_sign maintainers <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
# The product tree has absolute paths, which CPack takes only under this prefix.
set(CPACK_PACKAGING_INSTALL_PREFIX "/")
set(CPACK_COMPONENTS_ALL tool product)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME backup-sign)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_NAME backup-sign-product)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_DEPENDS libxml2-utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)

# Two Debian packages, corvel_*.deb and corvel-dev_*.deb: `cpack` in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvel)
set(CPACK_PACKAGE_CONTACT "The Corvel developers <corvel@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "turns image sequences into QuickTime movies")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL corvel corvel-dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CORVEL_PACKAGE_NAME corvel)
set(CPACK_DEBIAN_CORVEL_PACKAGE_SECTION video)
set(CPACK_DEBIAN_CORVEL_PACKAGE_SHLIBDEPS ON)
# The SDK's library belongs to the package itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CORVEL_CONTENTS}/Frameworks)
# Loaded when a window is wanted, so a machine without a screen can do without.
set(CPACK_DEBIAN_CORVEL_PACKAGE_RECOMMENDS "libsdl2-2.0-0, fonts-noto-core, fonts-noto-cjk")
# To write into pictures with, whatever else is there.
set(CPACK_DEBIAN_CORVEL_PACKAGE_DEPENDS fonts-dejavu-core)
set(CPACK_COMPONENT_CORVEL_DESCRIPTION
  "Corvel renders image sequences to QuickTime movies from the command line,
with sound, time code and reel name, and movies to image sequences.")

set(CPACK_DEBIAN_CORVEL-DEV_PACKAGE_NAME corvel-dev)
set(CPACK_DEBIAN_CORVEL-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CORVEL-DEV_PACKAGE_DEPENDS
  "corvel (= ${PROJECT_VERSION}), libboost-dev, libplist-dev, libseccomp-dev, uuid-dev")
set(CPACK_COMPONENT_CORVEL-DEV_DESCRIPTION
  "Headers and libraries for those who write a plug-in for Corvel,
or a worker program that speaks its protocol.")
include(CPack)

# Where the parts of the application bundle are built; the install tree has the same layout.
set(CORVEL_CONTENTS ${CMAKE_BINARY_DIR}/Corvel.app/Contents)
set(CORVEL_HELPER_FOLDER ${CORVEL_CONTENTS}/Resources/CorvelQuickTimeHelper-32.app)

# Writes CONTENTS/Info.plist for the bundle NAME with the given identifier and executable.
function(corvel_info_plist contents name identifier executable package_type)
  set(BUNDLE_NAME ${name})
  set(BUNDLE_IDENTIFIER ${identifier})
  set(BUNDLE_EXECUTABLE ${executable})
  set(BUNDLE_PACKAGE_TYPE ${package_type})
  configure_file(${CMAKE_SOURCE_DIR}/cmake/Info.plist.in ${contents}/Info.plist @ONLY)
endfunction()

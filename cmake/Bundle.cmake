include(GNUInstallDirs)

# Where the parts of the application bundle are built; the install tree has the same layout.
set(CORVEL_CONTENTS ${CMAKE_BINARY_DIR}/Corvel.app/Contents)
set(CORVEL_HELPER_FOLDER ${CORVEL_CONTENTS}/Resources/CorvelQuickTimeHelper-32.app)
set(CORVEL_INSTALLED_CONTENTS lib/corvel/Corvel.app/Contents)

# What a run path calls the folder of the file that has it.
if(APPLE)
  set(CORVEL_ORIGIN "@loader_path")
else()
  set(CORVEL_ORIGIN "$ORIGIN")
endif()

# Writes CONTENTS/Info.plist for the bundle NAME with the given identifier and executable.
function(corvel_info_plist contents name identifier executable package_type)
  set(BUNDLE_NAME ${name})
  set(BUNDLE_IDENTIFIER ${identifier})
  set(BUNDLE_EXECUTABLE ${executable})
  set(BUNDLE_PACKAGE_TYPE ${package_type})
  configure_file(${CMAKE_SOURCE_DIR}/cmake/Info.plist.in ${contents}/Info.plist @ONLY)
endfunction()

# Puts a program, plug-in or library at FOLDER of the bundle, "MacOS" say: where it is built and where it is installed.
# More arguments go to install(TARGETS …).
function(corvel_place_in_bundle target folder)
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CORVEL_CONTENTS}/${folder}
    LIBRARY_OUTPUT_DIRECTORY ${CORVEL_CONTENTS}/${folder})
  install(TARGETS ${target} ${ARGN}
    RUNTIME DESTINATION ${CORVEL_INSTALLED_CONTENTS}/${folder} COMPONENT corvel
    LIBRARY DESTINATION ${CORVEL_INSTALLED_CONTENTS}/${folder} COMPONENT corvel)
endfunction()

# The same for a file that was made in the build tree's bundle: FILE is its path below Contents.
function(corvel_install_bundle_file file)
  get_filename_component(folder ${file} DIRECTORY)
  install(FILES ${CORVEL_CONTENTS}/${file} DESTINATION ${CORVEL_INSTALLED_CONTENTS}/${folder} COMPONENT corvel)
endfunction()

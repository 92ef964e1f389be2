# Every library that the project uses is named here once; each folder links what it needs.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Boost REQUIRED)
find_package(fmt REQUIRED)
find_package(spdlog REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)
find_package(OpenImageIO REQUIRED)
# The package names an include folder of a library that it neither needs nor installs, which CMake refuses.
get_target_property(oiio_includes OpenImageIO::OpenImageIO INTERFACE_INCLUDE_DIRECTORIES)
foreach(folder ${oiio_includes})
  if(NOT folder MATCHES "^\\$" AND NOT EXISTS ${folder})
    list(REMOVE_ITEM oiio_includes ${folder})
  endif()
endforeach()
set_target_properties(OpenImageIO::OpenImageIO PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${oiio_includes}")

pkg_check_modules(libav REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil libswresample)
pkg_check_modules(openexr REQUIRED IMPORTED_TARGET OpenEXR)
pkg_check_modules(deflate REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(tiff REQUIRED IMPORTED_TARGET libtiff-4)
pkg_check_modules(ocio REQUIRED IMPORTED_TARGET OpenColorIO)
pkg_check_modules(pangocairo REQUIRED IMPORTED_TARGET pangocairo)
pkg_check_modules(sdl2 REQUIRED sdl2)  # for its headers: the library is loaded when wanted
find_package(Qt6 REQUIRED COMPONENTS Widgets)  # only programs with windows link it, and the rest does not load it
pkg_check_modules(hwy REQUIRED IMPORTED_TARGET libhwy)
if(APPLE)
  add_library(PkgConfig::uuid INTERFACE IMPORTED)  # the C library has it
else()
  pkg_check_modules(uuid REQUIRED IMPORTED_TARGET uuid)
  pkg_check_modules(plist REQUIRED IMPORTED_TARGET libplist-2.0)
  pkg_check_modules(seccomp REQUIRED IMPORTED_TARGET libseccomp)
endif()

# The libraries from outside, each found once and linked only by the module that wraps it.

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(CLI11 REQUIRED)

foreach(library IN ITEMS libpng libjpeg libwebp libwebpdemux libheif libexif lcms2 libisal libdeflate libhwy libcurl zlib)
  pkg_check_modules(${library} REQUIRED IMPORTED_TARGET ${library})
endforeach()

# Of libhwy only the headers are used (platform/graphics/ProcessorTarget.h).

# What few runs need is not linked but opened then (SystemLibrary.h): <library>_FILE is what the loader knows it by.
foreach(library IN ITEMS libheif libcurl)
  list(GET ${library}_LINK_LIBRARIES 0 file)
  file(REAL_PATH "${file}" file)
  if(NOT file MATCHES "/([^/]*\\.so\\.[0-9]+)[^/]*$")
    message(FATAL_ERROR "${library}: ${file} is no shared library with a version")
  endif()
  set(${library}_FILE "${CMAKE_MATCH_1}")
endforeach()

if(QUILLOMAT_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

# The libraries from outside, each found once and linked only by the module that wraps it.

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(CLI11 REQUIRED)

foreach(library IN ITEMS libpng libjpeg libwebp libwebpdemux libheif libexif lcms2 libisal libdeflate libhwy libcurl zlib)
  pkg_check_modules(${library} REQUIRED IMPORTED_TARGET ${library})
endforeach()

if(QUILLOMAT_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

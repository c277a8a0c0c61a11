# Build settings, language level and warnings, in one place.

option(QUILLOMAT_TESTS "Build the tests" ON)
option(QUILLOMAT_WINDOW "Build the touch window (needs Qt 6.4)" OFF)
option(QUILLOMAT_BENCHMARKS "Build the benchmarks (needs Google Benchmark)" OFF)
option(QUILLOMAT_FUZZERS "Build the fuzz targets (needs Clang's libFuzzer)" OFF)
option(QUILLOMAT_PEERS "Build the peers' side of the benchmarks (OpenCV, Qt, libvips, ImageMagick)" OFF)
set(QUILLOMAT_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")
set(QUILLOMAT_SERVER "quillomat.invalid" CACHE STRING "The maker's web server, short host form")
set(QUILLOMAT_TUTORIAL_URL "https://tutorial.quillomat.invalid/importing" CACHE STRING "The import tutorial page")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

# Every build gives the same bits on every processor: no fused multiply-add behind our back.
add_compile_options(-ffp-contract=off)

add_library(quillomat_warnings INTERFACE)
target_compile_options(quillomat_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast -Wcast-qual -Wformat=2 -Wundef -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlapping copies inside std::string's operator+ that are not there (GCC bug 105651).
  target_compile_options(quillomat_warnings INTERFACE -Wduplicated-cond -Wlogical-op -Wuseless-cast -Wno-restrict)
endif()

if(QUILLOMAT_SANITIZE)
  # Assertions on; line tables are all a report needs, and more would double the time to build.
  set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O1 -g1")
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
  add_compile_options(-fsanitize=${QUILLOMAT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QUILLOMAT_SANITIZE})
endif()

# The fuzzer is led by which branches of our code an input takes.
if(QUILLOMAT_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
  # Clang warns of other things than the compiler that is built with every day; they are no reason not to fuzz.
  target_compile_options(quillomat_warnings INTERFACE -Wno-error)
endif()

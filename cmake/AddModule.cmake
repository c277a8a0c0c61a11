# One folder, one static library, one call that names what it may use.
#
#   add_module(NAME geometry_fitting
#     DEPENDS   platform_views geometry      our modules whose headers may be included, each named
#     LIBRARIES PkgConfig::libpng            libraries from outside, seen by this module alone
#     HEADERS   View+Quadrilateral.h         what other modules may include
#     PRIVATE_HEADERS Solver.h               what this module and its own tests alone may include
#     SOURCES   View+Quadrilateral.cpp
#     TESTS     Quadrilateral_test.cpp)      below tests/, in the mirrored folder
#
# Each module's public headers are linked into an include root of its own, and a module sees only its own root and the
# roots of the modules it names. An include of anything else does not compile: linking is transitive, including is not.
# Headers are named from the source root, so that `#include "platform/foundation/Value.h"` says which room it comes from.

set(QUILLOMAT_INCLUDE_ROOTS "${CMAKE_BINARY_DIR}/include-roots")

function(quillomat_publish_headers name folder)
  foreach(header IN LISTS ARGN)
    set(link "${QUILLOMAT_INCLUDE_ROOTS}/${name}/${folder}/${header}")
    get_filename_component(linkFolder "${link}" DIRECTORY)
    file(MAKE_DIRECTORY "${linkFolder}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${header}" "${link}" SYMBOLIC)
  endforeach()
endfunction()

function(quillomat_include_roots target)
  foreach(module IN LISTS ARGN)
    if(NOT TARGET ${module})
      message(FATAL_ERROR "${target} names ${module}, which does not stand below it")
    endif()
    target_include_directories(${target} PRIVATE "${QUILLOMAT_INCLUDE_ROOTS}/${module}")
  endforeach()
endfunction()

function(add_module)
  cmake_parse_arguments(MODULE "" "NAME;FOLDER" "DEPENDS;LIBRARIES;HEADERS;PRIVATE_HEADERS;SOURCES;TESTS;TEST_DEPENDS;TEST_LIBRARIES;DEFINITIONS" ${ARGN})
  if(MODULE_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "add_module ${MODULE_NAME}: unknown ${MODULE_UNPARSED_ARGUMENTS}")
  endif()
  if(MODULE_FOLDER)
    set(folder "${MODULE_FOLDER}")
  else()
    file(RELATIVE_PATH folder "${CMAKE_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
  endif()

  # Roots are made afresh, so that a header taken off the list is gone from the root as well.
  file(REMOVE_RECURSE "${QUILLOMAT_INCLUDE_ROOTS}/${MODULE_NAME}")
  quillomat_publish_headers(${MODULE_NAME} "${folder}" ${MODULE_HEADERS})
  file(REMOVE_RECURSE "${QUILLOMAT_INCLUDE_ROOTS}/${MODULE_NAME}.private")
  quillomat_publish_headers(${MODULE_NAME}.private "${folder}" ${MODULE_PRIVATE_HEADERS})

  add_library(${MODULE_NAME} STATIC ${MODULE_SOURCES})
  quillomat_include_roots(${MODULE_NAME} ${MODULE_NAME} ${MODULE_DEPENDS})
  target_include_directories(${MODULE_NAME} PRIVATE "${QUILLOMAT_INCLUDE_ROOTS}/${MODULE_NAME}.private")
  target_compile_definitions(${MODULE_NAME} PRIVATE ${MODULE_DEFINITIONS})
  target_link_libraries(${MODULE_NAME} PRIVATE quillomat_warnings ${MODULE_DEPENDS} ${MODULE_LIBRARIES} Threads::Threads)
  set_property(TARGET ${MODULE_NAME} PROPERTY QUILLOMAT_DEPENDS "${MODULE_DEPENDS}")

  if(QUILLOMAT_TESTS AND MODULE_TESTS)
    list(TRANSFORM MODULE_TESTS PREPEND "${CMAKE_SOURCE_DIR}/tests/${folder}/")
    add_module_test(NAME ${MODULE_NAME}_test SOURCES ${MODULE_TESTS}
      DEPENDS ${MODULE_NAME} ${MODULE_DEPENDS} ${MODULE_TEST_DEPENDS} LIBRARIES ${MODULE_TEST_LIBRARIES})
    target_include_directories(${MODULE_NAME}_test PRIVATE "${QUILLOMAT_INCLUDE_ROOTS}/${MODULE_NAME}.private")
  endif()
endfunction()

# A GoogleTest program over the named modules; each of its tests is a ctest of its own.
function(add_module_test)
  cmake_parse_arguments(TEST "" "NAME" "SOURCES;DEPENDS;LIBRARIES" ${ARGN})
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  quillomat_include_roots(${TEST_NAME} ${TEST_DEPENDS})
  target_include_directories(${TEST_NAME} PRIVATE "${CMAKE_SOURCE_DIR}/tests/support")
  target_link_libraries(${TEST_NAME} PRIVATE quillomat_warnings ${TEST_DEPENDS} ${TEST_LIBRARIES} GTest::gmock_main Threads::Threads)
  target_compile_definitions(${TEST_NAME} PRIVATE
    QUILLOMAT_SOURCE_DIR="${CMAKE_SOURCE_DIR}" QUILLOMAT_BINARY_DIR="${CMAKE_BINARY_DIR}")
  # The tests' own code needs neither speed nor checks for undefined behaviour, and is half of what there is to build.
  target_compile_options(${TEST_NAME} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O1>)
  if(QUILLOMAT_SANITIZE MATCHES "undefined")
    target_compile_options(${TEST_NAME} PRIVATE -fno-sanitize=undefined)
  endif()
  set_target_properties(${TEST_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  gtest_discover_tests(${TEST_NAME} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()

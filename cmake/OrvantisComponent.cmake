# orvantis_component(NAME DIR <dir> [DEPS targets...] [TEST_DEPS targets...])
#
# One component is one folder: every foo.cpp in it (not foo_test.cpp) goes into the
# static library orvantis_<NAME>; every foo_test.cpp goes into the test program
# <NAME>_tests, which CTest runs test by test.
function(orvantis_component name)
  cmake_parse_arguments(ARG "" "DIR" "DEPS;TEST_DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${ARG_DIR}/*.cpp)
  file(GLOB tests CONFIGURE_DEPENDS ${ARG_DIR}/*_test.cpp)
  if(tests)
    list(REMOVE_ITEM sources ${tests})
  endif()
  set(lib orvantis_${name})
  if(sources)
    add_library(${lib} STATIC ${sources})
    target_link_libraries(${lib} PUBLIC ${ARG_DEPS})
  else()
    add_library(${lib} INTERFACE)
    target_link_libraries(${lib} INTERFACE ${ARG_DEPS})
  endif()
  if(sources)
    target_include_directories(${lib} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    orvantis_warnings(${lib})
  else()
    target_include_directories(${lib} INTERFACE ${PROJECT_SOURCE_DIR}/src)
  endif()
  if(tests AND ORVANTIS_BUILD_TESTS)
    add_executable(${name}_tests ${tests})
    target_link_libraries(${name}_tests PRIVATE ${lib} ${ARG_TEST_DEPS} orvantis_test_guards GTest::gmock
                          GTest::gtest_main)
    orvantis_warnings(${name}_tests)
    gtest_discover_tests(${name}_tests DISCOVERY_TIMEOUT 60
                         PROPERTIES LABELS unit ENVIRONMENT "TZ=UTC")
  endif()
endfunction()

function(orvantis_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
endfunction()

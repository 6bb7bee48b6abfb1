# recording2_test(NAME SOURCES... LINK... [LABELS ...]) makes a GoogleTest program; every case of it is one test.
include(GoogleTest)
find_package(GTest REQUIRED)

function(recording2_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE project_settings ${ARG_LINK} GTest::gmock GTest::gtest GTest::gtest_main)
  if(NOT WIN32)  # there a program finds only the libraries that lie beside it
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/test-programs")
  endif()
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  set(timeout 120)
  if(CMAKE_CROSSCOMPILING_EMULATOR)  # which may take long to open a file
    set(timeout 600)
  endif()
  # Values in the names of tests would hold addresses, which differ from build to build.
  gtest_discover_tests(
    ${name}
    NO_PRETTY_VALUES
    DISCOVERY_MODE PRE_TEST
    TEST_PREFIX "${name}."
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${timeout}
  )
endfunction()

# recording2_test(NAME [APART] SOURCES... LINK... [LABELS ...]) makes a GoogleTest program. It is one test of ctest, as starting a
# process (under Wine, or with sanitizers) takes longer than most cases do; what its cases gave lies in
# test-reports/NAME.xml. Of a program that is APART or has the label integration every case is a test: those need a process
# for themselves, or start others, take long and are shared among the processors.
include(GoogleTest)
find_package(GTest REQUIRED)

function(recording2_test name)
  cmake_parse_arguments(ARG "APART" "" "SOURCES;LINK;LABELS" ${ARGN})
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
  if(ARG_APART OR integration IN_LIST ARG_LABELS)
    # Values in the names of tests would hold addresses, which differ from build to build.
    gtest_discover_tests(
      ${name}
      NO_PRETTY_VALUES
      DISCOVERY_MODE PRE_TEST
      TEST_PREFIX "${name}."
      PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${timeout}
    )
  else()
    math(EXPR timeout "3 * ${timeout}")
    add_test(NAME ${name} COMMAND ${name} --gtest_output=xml:test-reports/${name}.xml WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${timeout} COST 10)  # begins early
  endif()
endfunction()

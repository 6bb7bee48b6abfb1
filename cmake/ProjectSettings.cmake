# Compiler settings that every target of the project shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()
# CMake's own -O3 takes longer and is no faster here (bench/run).
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

# Host, plug-in and libraries lie beside each other in the build tree and keep their places when installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# recording2_library_version(TARGET): what is linked with one minor version may not run with the next (Windows has no such
# names). The package of the libraries is named after it.
set(RECORDING2_SOVERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
function(recording2_library_version name)
  if(NOT WIN32)
    set_target_properties(${name} PROPERTIES VERSION "${PROJECT_VERSION}" SOVERSION "${RECORDING2_SOVERSION}")
  endif()
endfunction()

option(RECORDING2_SANITIZE "Build with address and undefined behaviour sanitizers" OFF)
option(RECORDING2_FUZZ "Build everything instrumented for libFuzzer (clang), with both sanitizers" OFF)
option(RECORDING2_COVERAGE "Build everything so that a run tells which lines it reached (clang)" OFF)

add_library(project_settings INTERFACE)
target_compile_definitions(project_settings INTERFACE QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_STRICT_ITERATORS)
# No contraction: arithmetic gives the same bits on every machine.
target_compile_options(
  project_settings INTERFACE -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
 -Woverloaded-virtual -Wcast-align -Wformat=2 -ffp-contract=off
)
# Of sources that are compiled together g++ takes what each keeps to itself for a header's, as they are included, and clang
# the names of one for shadowed by those of another.
set(together $<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>)
target_compile_options(
  project_settings INTERFACE $<$<AND:${together},$<CXX_COMPILER_ID:GNU>>:-Wno-subobject-linkage>
                             $<$<AND:${together},$<CXX_COMPILER_ID:Clang>>:-Wno-shadow>
)
if(RECORDING2_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # What checks refer to is millions of addresses: a program that lies at a fixed place starts in half the time.
  add_link_options(-fsanitize=address,undefined $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()
if(RECORDING2_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(RECORDING2_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()

# recording2_command_line(TARGET): a library that runs once and includes the command line library, whose templates take
# long to optimise. Not without any optimisation: inline functions that others use, too, may be linked from it.
function(recording2_command_line name)
  target_compile_options(${name} PRIVATE "$<$<CONFIG:Release>:-O1>")
  set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON UNITY_BUILD_BATCH_SIZE 0)
endfunction()

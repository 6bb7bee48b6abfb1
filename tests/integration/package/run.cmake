# cmake -P: installs BUILD_FOLDER, builds OUTSIDE_SOURCE against it and runs the program, all below WORK_FOLDER.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT code EQUAL 0)
    list(JOIN ARGN " " command)
    message(NOTICE "${output}")
    message(FATAL_ERROR "${command} ended with ${code}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_FOLDER}")
set(prefix "${WORK_FOLDER}/installed")
set(outside_build "${WORK_FOLDER}/outside")
run("${CMAKE_COMMAND}" --install "${BUILD_FOLDER}" --prefix "${prefix}")

# A package that names the folders it was built in works nowhere else.
file(GLOB_RECURSE package_files "${prefix}/*.cmake")
if(NOT package_files)
  message(FATAL_ERROR "No CMake package was installed below ${prefix}")
endif()
foreach(file IN LISTS package_files)
  file(READ "${file}" content)
  foreach(folder IN ITEMS "${SOURCE_FOLDER}/" "${BUILD_FOLDER}/")
    string(FIND "${content}" "${folder}" position)
    if(NOT position EQUAL -1)
      message(FATAL_ERROR "${file} names ${folder}")
    endif()
  endforeach()
endforeach()

set(toolchain "")
if(TOOLCHAIN)
  set(toolchain "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}")
endif()
set(programs "${outside_build}")
if(SUFFIX)  # Windows: a program finds the libraries that lie beside it
  set(programs "${prefix}/bin")
endif()
run(
  "${CMAKE_COMMAND}" -S "${OUTSIDE_SOURCE}" -B "${outside_build}" -G "${GENERATOR}"
  "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}"
  "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${programs}" ${toolchain}
)
run("${CMAKE_COMMAND}" --build "${outside_build}")
run(${EMULATOR} "${programs}/outside${SUFFIX}")

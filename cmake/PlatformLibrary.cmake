# recording2_platform_library(NAME OUTPUT_NAME SOURCES... DEPENDS...) builds the bundled replacement of one station
# library, or takes the station's own: with -DRECORDING2_<NAME>_PACKAGE=Pkg the CMake package Pkg is looked up and must
# provide the target Pkg::<name> with the headers <name/...>. Either way the project links Recording2::<name>.
function(recording2_platform_library name)
  cmake_parse_arguments(ARG "" "OUTPUT_NAME" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  string(TOUPPER "${name}" upper)
  set(RECORDING2_${upper}_PACKAGE
      ""
      CACHE STRING "CMake package that provides ${name} instead of the bundled one"
  )
  if(RECORDING2_${upper}_PACKAGE)
    set(package "${RECORDING2_${upper}_PACKAGE}")
    find_package(${package} CONFIG REQUIRED GLOBAL)
    add_library(Recording2::${name} ALIAS ${package}::${name})
    return()
  endif()
  add_library(${name} SHARED ${ARG_SOURCES})
  add_library(Recording2::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME "${ARG_OUTPUT_NAME}")
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "")  # MinGW's "lib"
  endif()
  recording2_library_version(${name})
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_include_directories(
    ${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
                   "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
  )
  target_link_libraries(
    ${name}
    PUBLIC Qt5::Core ${ARG_DEPENDS}
    PRIVATE "$<BUILD_INTERFACE:project_settings>" ${ARG_PRIVATE_DEPENDS}
  )
  set_property(GLOBAL APPEND PROPERTY RECORDING2_BUNDLED_TARGETS ${name})
  install(DIRECTORY include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT dev)
endfunction()

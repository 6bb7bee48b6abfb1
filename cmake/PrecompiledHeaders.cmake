# What makes compiling quick: the sources of a target are compiled some at a time as one, and the headers that most of them
# include once for the product and once, as tests/support/testing.h, for the tests. A source still includes what it uses: preset dev,
# which compiles every source of the product by itself, refuses one that does not.
set(RECORDING2_PRECOMPILE ALL CACHE STRING "Whose sources are compiled together, with common headers: ALL, TESTS or NONE")
set_property(CACHE RECORDING2_PRECOMPILE PROPERTY STRINGS ALL TESTS NONE)

set(CMAKE_UNITY_BUILD_BATCH_SIZE 32)
if(RECORDING2_PRECOMPILE STREQUAL ALL)
  set(CMAKE_UNITY_BUILD ON)
endif()

set(precompiled_std
    <algorithm> <array> <cmath> <cstdint> <functional> <iostream> <limits> <map> <memory> <optional> <set> <string>
    <string_view> <utility> <vector>
)
set(precompiled_qt <QDateTime> <QDir> <QFile> <QFileInfo> <QString> <QStringList>)

# A target that compiles nothing but headers, for others with the same settings to use.
function(recording2_precompiled_headers name)
  file(WRITE "${PROJECT_BINARY_DIR}/${name}.cpp" "")
  add_library(${name} OBJECT "${PROJECT_BINARY_DIR}/${name}.cpp")
  target_link_libraries(${name} PRIVATE project_settings Qt5::Core)
  target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()

# Whether a target links a library, by itself or through what it links.
function(recording2_links result target library)
  set(found FALSE)
  foreach(property IN ITEMS LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
    get_target_property(linked ${target} ${property})
    foreach(other IN LISTS linked)
      if(other STREQUAL library)
        set(found TRUE)
      elseif(NOT found AND TARGET ${other})
        recording2_links(found ${other} ${library})
      endif()
    endforeach()
  endforeach()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# recording2_use_precompiled(FROM "LIBRARY;..." FOLDER...) lets every target below the folders that links the libraries
# use them.
function(recording2_use_precompiled from libraries)
  foreach(folder IN LISTS ARGN)
    get_property(subfolders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
    recording2_use_precompiled(${from} "${libraries}" ${subfolders})
    get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
      get_target_property(type ${target} TYPE)
      get_target_property(own ${target} PRECOMPILE_HEADERS)
      set(links TRUE)
      foreach(library IN LISTS libraries)
        if(links)
          recording2_links(links ${target} ${library})
        endif()
      endforeach()
      if(links AND NOT own AND type MATCHES "^(STATIC_LIBRARY|SHARED_LIBRARY|EXECUTABLE)$")
        target_precompile_headers(${target} REUSE_FROM ${from})
      endif()
    endforeach()
  endforeach()
endfunction()

# What programs need at run time beside Windows itself: Qt's and, with MinGW, the compiler's libraries. They are laid
# beside the programs, in the build folder and where they are installed, so that nothing has to be on the PATH.
if(NOT WIN32)
  return()
endif()

set(runtime_libraries "")
if(MINGW)
  foreach(library IN ITEMS libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(
      COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${library}"
      OUTPUT_VARIABLE file
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY
    )
    if(NOT IS_ABSOLUTE "${file}")
      message(FATAL_ERROR "The compiler's run-time library ${library} was not found")
    endif()
    list(APPEND runtime_libraries "${file}")
  endforeach()
endif()

get_target_property(qt_core Qt5::Core IMPORTED_LOCATION_RELEASE)
list(APPEND runtime_libraries "${qt_core}")
cmake_path(GET qt_core PARENT_PATH qt_programs)

# Qt Sql comes with its driver when a library of the project uses it.
set(sql_driver "")
get_property(bundled_targets GLOBAL PROPERTY RECORDING2_BUNDLED_TARGETS)
foreach(library IN LISTS bundled_targets)
  get_target_property(linked ${library} LINK_LIBRARIES)
  if("Qt5::Sql" IN_LIST linked)
    list(APPEND runtime_libraries "${qt_programs}/Qt5Sql.dll")
    set(sql_driver "${qt_programs}/../plugins/sqldrivers/qsqlite.dll")
  endif()
endforeach()

file(COPY ${runtime_libraries} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
install(FILES ${runtime_libraries} DESTINATION "${CMAKE_INSTALL_BINDIR}")
if(sql_driver)
  file(COPY "${sql_driver}" DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/sqldrivers")
  install(FILES "${sql_driver}" DESTINATION "${CMAKE_INSTALL_BINDIR}/sqldrivers")
endif()

# cmake --install: libraries, headers, the CMake package "Recording2" and its pkg-config file. What goes into which Debian
# package is told by components: library, dev, tools, python, doc.
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Recording2")
get_property(bundled_targets GLOBAL PROPERTY RECORDING2_BUNDLED_TARGETS)
install(
  TARGETS Recording2 ${bundled_targets}
  EXPORT Recording2Targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT library
)
install(
  EXPORT Recording2Targets
  NAMESPACE Recording2::
  DESTINATION "${package_dir}"
  COMPONENT dev
)

set(RECORDING2_STATION_PACKAGES "")
set(pkgconfig_libraries "")
set(pkgconfig_requires "")
foreach(name IN ITEMS vkbase values startup zelvo)
  string(TOUPPER "${name}" upper)
  if(RECORDING2_${upper}_PACKAGE)
    string(APPEND RECORDING2_STATION_PACKAGES
           "find_dependency(${RECORDING2_${upper}_PACKAGE} CONFIG)\n"
           "add_library(Recording2::${name} ALIAS ${RECORDING2_${upper}_PACKAGE}::${name})\n"
    )
    string(APPEND pkgconfig_requires " ${RECORDING2_${upper}_PACKAGE}")
  else()
    get_target_property(output ${name} OUTPUT_NAME)
    string(APPEND pkgconfig_libraries " -l${output}")
  endif()
endforeach()
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/Recording2Config.cmake.in" "${PROJECT_BINARY_DIR}/Recording2Config.cmake"
  INSTALL_DESTINATION "${package_dir}"
)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/Recording2ConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/Recording2Config.cmake" "${PROJECT_BINARY_DIR}/Recording2ConfigVersion.cmake"
        DESTINATION "${package_dir}" COMPONENT dev
)
if(WIN32)
  install(FILES "${PROJECT_SOURCE_DIR}/doc/format.md" "${PROJECT_SOURCE_DIR}/doc/recording-text.md"
                "${PROJECT_SOURCE_DIR}/doc/windows.md"
          DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  )
  return()
endif()

file(RELATIVE_PATH pkgconfig_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" pkgconfig_prefix "${pkgconfig_prefix}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/recording2.pc.in" "${PROJECT_BINARY_DIR}/recording2.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/recording2.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)

# Hosts load the plug-in by its file's name, which the libraries' folder has for compilers only.
install(
  CODE "set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/recording2\")
        file(MAKE_DIRECTORY \"\${folder}\")
        file(CREATE_LINK \"../Recording2.so.${RECORDING2_SOVERSION}\" \"\${folder}/Recording2.so\" SYMBOLIC)"
  COMPONENT library
)

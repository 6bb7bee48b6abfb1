# cmake --install: libraries, headers, tools and the CMake package "Recording2".
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Recording2")
get_property(bundled_targets GLOBAL PROPERTY RECORDING2_BUNDLED_TARGETS)
install(
  TARGETS Recording2 ${bundled_targets}
  EXPORT Recording2Targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
)
install(
  EXPORT Recording2Targets
  NAMESPACE Recording2::
  DESTINATION "${package_dir}"
)

set(RECORDING2_STATION_PACKAGES "")
foreach(name IN ITEMS vkbase values startup zelvo)
  string(TOUPPER "${name}" upper)
  if(RECORDING2_${upper}_PACKAGE)
    string(APPEND RECORDING2_STATION_PACKAGES
           "find_dependency(${RECORDING2_${upper}_PACKAGE} CONFIG)\n"
           "add_library(Recording2::${name} ALIAS ${RECORDING2_${upper}_PACKAGE}::${name})\n"
    )
  endif()
endforeach()
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/Recording2Config.cmake.in" "${PROJECT_BINARY_DIR}/Recording2Config.cmake"
  INSTALL_DESTINATION "${package_dir}"
)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/Recording2ConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/Recording2Config.cmake" "${PROJECT_BINARY_DIR}/Recording2ConfigVersion.cmake"
        DESTINATION "${package_dir}"
)
install(FILES "${PROJECT_SOURCE_DIR}/doc/format.md" "${PROJECT_SOURCE_DIR}/doc/recording-text.md"
              "${PROJECT_SOURCE_DIR}/doc/windows.md"
        DESTINATION "${CMAKE_INSTALL_DOCDIR}"
)

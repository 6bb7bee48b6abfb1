# cpack -G DEB: one Debian package for each component; scripts/package calls it.
set(RECORDING2_MAINTAINER "Recording2 maintainers <maintainers@recording2.invalid>" CACHE STRING "Who answers for the packages")
set(CPACK_PACKAGE_NAME recording2)
set(CPACK_PACKAGE_CONTACT "${RECORDING2_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each has its own
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/StagedFiles.cmake")
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(debian_folder "${CMAKE_CURRENT_BINARY_DIR}/debian")

# recording2_package(COMPONENT NAME SECTION DEPENDS_ON_COMPONENTS DESCRIPTION) also lays beside its files what Debian wants of every package.
function(recording2_package component name section needs description)
  set(package_name ${name})
  string(TOUPPER "${component}" upper)
  set(settings "")
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${name}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DEPENDS "${needs}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  configure_file(debian/changelog.in "${debian_folder}/${name}/changelog" @ONLY)
  set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/${name}")
  install(FILES debian/copyright "${debian_folder}/${name}/changelog" DESTINATION "${documents}" COMPONENT ${component})
  set(overrides "${CMAKE_CURRENT_SOURCE_DIR}/debian/overrides/${component}")
  if(EXISTS "${overrides}")
    install(FILES "${overrides}" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides" RENAME "${name}" COMPONENT ${component})
  endif()
endfunction()

recording2_package(
  library librecording2-${RECORDING2_SOVERSION} libs "" "Recording library of a radio-monitoring station
Records what receivers and direction finders publish in a station's value
tree, and reads and changes such recordings. The package has the library,
which hosts also load as their recorder plug-in, the value tree's libraries
and the archive's client."
)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "libqt5sql5-sqlite")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS "libqt5sql5-psql")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/debian/library/triggers")

recording2_package(
  dev librecording2-dev libdevel library "Recording library of a radio-monitoring station - development files
Headers, the CMake package Recording2 and the pkg-config file recording2 for
programs that record, read or change recordings of a radio-monitoring
station."
)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qtbase5-dev (>= 5.15)")

if(TARGET recstation)
  recording2_package(
    tools recording2-tools comm library "Record, look into and show recordings of receivers and direction finders
recstation records simulations, IQ files, sweeps, position logs and
direction finders, rectool looks into recordings, draws, checks and changes
them, recview shows them in the browser, and zelvod moves them to an
archive."
  )
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers | systemd-sysusers")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "fonts-dejavu-core, xdg-utils")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "recording2-doc, libqt5sql5-psql, libhamlib-utils, gpsd, soapysdr-module-all, rtl-sdr")
  set(scripts "${CMAKE_CURRENT_LIST_DIR}/debian/tools")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA "${scripts}/postinst" "${scripts}/prerm" "${scripts}/postrm")
endif()

if(TARGET recording2_python)
  recording2_package(
    python python3-recording2 python library "Python module for recordings of receivers and direction finders
The module recording2 opens recordings of a radio-monitoring station, gives
their spectra and values as numpy arrays, and writes new ones."
  )
  math(EXPR next_python "${Python3_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
      "python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next_python}), python3-numpy"
  )
  set(scripts "${CMAKE_CURRENT_LIST_DIR}/debian/python")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${scripts}/postinst" "${scripts}/prerm")
endif()

recording2_package(
  doc recording2-doc doc "" "Recordings of receivers and direction finders - documents
The format of recordings, how to record, look into, show, export and archive
them, and what is promised of each."
)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
include(CPack)

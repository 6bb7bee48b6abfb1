# Documents, menus, file types, services.
set(data "${CMAKE_INSTALL_DATAROOTDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/doc/" DESTINATION "${data}/doc/recording2-doc" COMPONENT doc FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
if(TARGET recview)
  install(FILES desktop/recview.desktop DESTINATION "${data}/applications" COMPONENT tools)
  install(FILES desktop/recording2.xml DESTINATION "${data}/mime/packages" COMPONENT tools)
  install(FILES "${PROJECT_SOURCE_DIR}/apps/recview/page/icon.svg" DESTINATION "${data}/icons/hicolor/scalable/apps" RENAME recview.svg
          COMPONENT tools
  )
endif()
if(TARGET recstation)
  install(FILES systemd/recstation@.service DESTINATION lib/systemd/system COMPONENT tools)
  install(FILES systemd/recording2.conf DESTINATION lib/sysusers.d COMPONENT tools)
  install(FILES systemd/station.toml DESTINATION "${data}/doc/recording2-tools/examples" COMPONENT tools)
endif()
if(TARGET zelvod)
  install(FILES systemd/zelvod.service DESTINATION lib/systemd/system COMPONENT tools)
  install(FILES systemd/archive.toml DESTINATION "${data}/doc/recording2-tools/examples" COMPONENT tools)
endif()

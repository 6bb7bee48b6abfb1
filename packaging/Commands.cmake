# Man pages and completion, made of what each program tells about its own commands.
if(NOT TARGET recstation)
  return()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(commands_folder "${PROJECT_BINARY_DIR}/commands")
set(generator_folder "${CMAKE_CURRENT_SOURCE_DIR}/commands")
set(generator "${generator_folder}/generate.py")
foreach(program IN ITEMS recstation rectool recview zelvod)
  if(NOT TARGET ${program})
    continue()
  endif()
  set(section 1)
  if(program STREQUAL zelvod)
    set(section 8)
  endif()
  set(other "")
  set(tell_other "")
  if(program STREQUAL recstation)
    set(tell_other COMMAND recstation check --print-command-tree > "${commands_folder}/recstation-check.json")
    set(other --other "${commands_folder}/recstation-check.json")
  endif()
  set(done "${commands_folder}/${program}.done")
  add_custom_command(
    OUTPUT "${done}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${commands_folder}"
    COMMAND ${program} --print-command-tree > "${commands_folder}/${program}.json"
    ${tell_other}
    COMMAND Python3::Interpreter "${generator}" "${commands_folder}/${program}.json" "${commands_folder}" --section ${section}
            --version "${PROJECT_VERSION}" ${other}
    COMMAND "${CMAKE_COMMAND}" -E touch "${done}"
    DEPENDS ${program} "${generator}" "${generator_folder}/manpages.py" "${generator_folder}/completion.py" "${generator_folder}/program.bash"
    VERBATIM
  )
  list(APPEND commands_done "${done}")
endforeach()
add_custom_target(commands ALL DEPENDS ${commands_done})

install(DIRECTORY "${commands_folder}/man/" DESTINATION "${CMAKE_INSTALL_MANDIR}" COMPONENT tools)
install(DIRECTORY "${commands_folder}/bash/" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions" COMPONENT tools)
install(DIRECTORY "${commands_folder}/zsh/" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions" COMPONENT tools)

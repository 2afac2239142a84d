# Manual pages and completions, made of what the program and the headers say themselves.
find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_FOUND OR CMAKE_CROSSCOMPILING)
  message(STATUS "Without Python there are no manual pages and no completions")
  return()
endif()

set(pages ${PROJECT_BINARY_DIR}/pages)
file(MAKE_DIRECTORY ${pages})
set(make_pages ${PROJECT_SOURCE_DIR}/hosts/ssfind/make_pages.py)
add_custom_command(
  OUTPUT ${pages}/ssfind.1 ${pages}/ssfind.bash ${pages}/_ssfind ${pages}/ssfind.fish
  COMMAND Python3::Interpreter ${make_pages} $<TARGET_FILE:ssfind> ${pages}
  DEPENDS ssfind ${make_pages})

set(make_interface_page ${PROJECT_SOURCE_DIR}/docs/make_interface_page.py)
list(TRANSFORM public_headers PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE headers)
add_custom_command(
  OUTPUT ${pages}/searchsystem.3
  COMMAND Python3::Interpreter ${make_interface_page} ${PROJECT_VERSION} ${pages}/searchsystem.3
          ${headers}
  DEPENDS ${headers} ${make_interface_page})
add_custom_target(searchsystem_pages ALL DEPENDS ${pages}/ssfind.1 ${pages}/searchsystem.3)

install(FILES ${pages}/ssfind.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
install(FILES ${pages}/searchsystem.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
        COMPONENT development)
install(FILES ${pages}/ssfind.bash COMPONENT programs RENAME ssfind
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${pages}/_ssfind COMPONENT programs
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${pages}/ssfind.fish COMPONENT programs
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

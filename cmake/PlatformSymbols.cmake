# What libsearchsystem-platform.so exports: see the comments at both functions.

# Sets in the caller the names of the platform's C functions, as the headers give them by
# SEARCHSYSTEM_SYMBOL, and those of the variables.
function(read_c_interface headers functions_variable data_variable)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${headers})
  set(functions)
  set(data)
  foreach(header ${headers})
    file(READ ${header} text)
    string(REGEX MATCHALL "SEARCHSYSTEM_SYMBOL\\([A-Za-z]+" found "${text}")
    list(TRANSFORM found REPLACE ".*\\(" "")
    list(APPEND functions ${found})
    string(REGEX MATCHALL "extern const [A-Za-z]+ k[A-Za-z]+" found "${text}")
    list(TRANSFORM found REPLACE ".* " "")
    list(APPEND data ${found})
  endforeach()
  list(REMOVE_ITEM functions name)
  set(${functions_variable} ${functions} PARENT_SCOPE)
  set(${data_variable} ${data} PARENT_SCOPE)
endfunction()

# Links `target`, a shared library of the platform's objects, so that it exports the C interface, both
# names of each function, under a public version, and what the plug-in's objects need besides under a
# private one that only a plug-in of the same version asks for. All else is hidden.
function(export_platform_symbols target version functions data)
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  set(public ${functions} ${data})
  foreach(name ${functions})
    list(APPEND public searchsystem_${name})
    target_link_options(${target} PRIVATE LINKER:--defsym=${name}=searchsystem_${name})
  endforeach()
  list(JOIN public " " public)
  set(importers $<TARGET_OBJECTS:searchsystem_plugin_objects>
                $<TARGET_OBJECTS:searchsystem_pdf_reader>)
  set(exporters $<TARGET_OBJECTS:searchsystem_platform_objects>)
  # In a file: there are too many objects for a command.
  set(arguments ${CMAKE_CURRENT_BINARY_DIR}/${target}_map.cmake)
  file(GENERATE OUTPUT ${arguments} CONTENT "set(NM [[${CMAKE_NM}]])
set(MAP [[${map}]])
set(VERSION ${version})
set(PUBLIC \"${public}\")
set(IMPORTERS [[${importers}]])
set(EXPORTERS [[${exporters}]])
include([[${PROJECT_SOURCE_DIR}/cmake/WriteVersionScript.cmake]])
")
  add_custom_command(
    OUTPUT ${map}
    COMMAND ${CMAKE_COMMAND} -P ${arguments}
    DEPENDS ${arguments} ${PROJECT_SOURCE_DIR}/cmake/WriteVersionScript.cmake ${importers}
            ${exporters}
    VERBATIM)
  # A source, so that it is made before the library is linked.
  target_sources(${target} PRIVATE ${map})
  set_source_files_properties(${map} PROPERTIES HEADER_FILE_ONLY ON)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
endfunction()

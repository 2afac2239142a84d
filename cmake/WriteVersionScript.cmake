# Writes the version script of the platform library: see PlatformSymbols.cmake.
cmake_minimum_required(VERSION 3.25)

# Sets in the caller the C++ names of the project that `nm` lists of the objects.
function(list_names variable objects)
  execute_process(COMMAND ${NM} --format=posix ${ARGN} ${objects} OUTPUT_VARIABLE listing
                  COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(^|\n)_Z[A-Za-z0-9_]*12searchsystem[A-Za-z0-9_]*" names "${listing}")
  list(TRANSFORM names REPLACE "\n" "")
  list(REMOVE_DUPLICATES names)
  set(${variable} ${names} PARENT_SCOPE)
endfunction()

list_names(needed "${IMPORTERS}" --undefined-only)
list_names(of_the_plugin "${IMPORTERS}" --defined-only --extern-only)
list_names(of_the_platform "${EXPORTERS}" --defined-only --extern-only)
list(REMOVE_ITEM needed ${of_the_plugin})
set(private)
foreach(name ${needed})
  if(name IN_LIST of_the_platform)
    string(APPEND private "    ${name};\n")
  endif()
endforeach()
string(REPLACE " " ";\n    " public "${PUBLIC}")

string(REGEX MATCH "^[0-9]+" major ${VERSION})
file(WRITE ${MAP} "SEARCHSYSTEM_PLATFORM_${major} {
  global:
    ${public};
  local:
    *;
};
SEARCHSYSTEM_PRIVATE_${VERSION} {
  global:
${private}};
")

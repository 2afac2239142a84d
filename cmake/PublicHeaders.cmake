# The public headers as they are installed, in one folder: hosts include <searchsystem/SearchSystem.h>,
# also those that are built with this project.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${public_headers})
foreach(header ${public_headers})
  file(READ ${header} text)
  string(REGEX REPLACE "#include \"[^\"]*/" "#include \"" text "${text}")
  cmake_path(GET header FILENAME name)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/searchsystem/${name} CONTENT "${text}" @ONLY)
endforeach()

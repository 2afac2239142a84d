# Writes, in C, functions that end the process when they are called, one with each name of the
# platform's C interface, and other libraries' variables and functions of the kind.
set(text "#include <stdlib.h>\n\n")
foreach(name ${c_functions} NSLog NSStringFromClass)
  string(APPEND text "void ${name}(void);\nvoid ${name}(void) { abort(); }\n")
endforeach()
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/ForeignFunctions.c "${text}")

set(text)
foreach(name ${c_data} NSMetadataQueryGatheringProgressNotification
             NSMetadataQueryDidFinishGatheringNotification NSString NSThread NSMetadataQuery)
  string(APPEND text "const long ${name}[1] = {-1};\n")
endforeach()
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/ForeignData.c "${text}")

# What distributions build with, unless the build's own flags say otherwise.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
add_compile_options(-fstack-protector-strong)
add_link_options(LINKER:-z,relro LINKER:-z,now)

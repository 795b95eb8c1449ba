# A build for another system: the libraries of the tests and tools come from cmake/cross/Find*.cmake.
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
# CMake would add ten system libraries to every link.
set(CMAKE_C_STANDARD_LIBRARIES "")
set(CMAKE_CXX_STANDARD_LIBRARIES "")
# The C library's own formatting, as on a terminal, and not the compiler's replacement for it: what the tests meet is then what
# runs there, and the file stays small. Only a definition that comes before every C++ header has this effect.
add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h>")
# Asio has no package to find: its users include it.
include(${CMAKE_CURRENT_LIST_DIR}/HeaderLibrary.cmake)
lumo_link_headers(asio asio.hpp)
include_directories(SYSTEM ${CMAKE_BINARY_DIR}/headers)

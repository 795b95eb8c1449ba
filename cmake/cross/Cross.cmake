# A build for another system: the libraries of the tests and tools come from cmake/cross/Find*.cmake.
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
if(WIN32)
  # CMake would add ten system libraries to every link. The C++ programs, which are the tools and tests, need these two for their
  # own sockets; the library names what it needs.
  set(CMAKE_C_STANDARD_LIBRARIES "")
  set(CMAKE_CXX_STANDARD_LIBRARIES "-lws2_32 -lmswsock")
endif()
# Asio has no package to find: its users include it.
include(${CMAKE_CURRENT_LIST_DIR}/HeaderLibrary.cmake)
lumo_link_headers(asio asio.hpp)
include_directories(SYSTEM ${CMAKE_BINARY_DIR}/headers)

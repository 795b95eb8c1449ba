# GoogleTest for the system that is built for, from the sources that the distribution's googletest package installs.
set(lumo_googletest /usr/src/googletest)
if(NOT EXISTS ${lumo_googletest}/CMakeLists.txt)
  message(FATAL_ERROR "GoogleTest's sources are not in ${lumo_googletest}: script/bootstrap windows")
endif()
if(NOT TARGET gmock_main)
  add_subdirectory(${lumo_googletest} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
set(GTest_FOUND ON)

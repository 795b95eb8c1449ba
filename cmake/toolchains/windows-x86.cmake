# Windows, 32 bits.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(lumo_triple i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)

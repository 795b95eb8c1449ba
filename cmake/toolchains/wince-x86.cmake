# Windows CE on x86: the compiler of 32-bit Windows without any of its runtime.
set(LUMO_WINCE ON)
include(${CMAKE_CURRENT_LIST_DIR}/windows-x86.cmake)
set(CMAKE_SHARED_LINKER_FLAGS_INIT "")
set(LUMO_DLLTOOL ${lumo_triple}-dlltool)

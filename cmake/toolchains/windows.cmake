# What both Windows toolchains share; the including file names lumo_triple.
set(CMAKE_SYSTEM_NAME Windows)
# The -posix compilers are the ones with std::thread, which the tests use.
set(CMAKE_C_COMPILER ${lumo_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${lumo_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${lumo_triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${lumo_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# For the libraries too: a file that needs the compiler's own DLLs is not loaded on a machine without them.
# No time in the files: the same sources give the same programs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -s -Wl,--no-insert-timestamp")
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../script/wine-run)

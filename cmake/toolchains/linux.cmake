# What both toolchains for the loader of Windows CE files share; the including file names lumo_triple and lumo_emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${lumo_triple}-gcc)
set(CMAKE_CXX_COMPILER ${lumo_triple}-g++)
set(CMAKE_FIND_ROOT_PATH /usr/${lumo_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The emulator then needs no libraries of that system.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_CROSSCOMPILING_EMULATOR ${lumo_emulator})

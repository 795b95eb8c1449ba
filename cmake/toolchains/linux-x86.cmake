# Linux on 32-bit x86, under an emulator. These programs load the Windows CE file for x86.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(lumo_triple i686-linux-gnu)
set(lumo_emulator qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)

# Windows CE on x86, any processor from the 486 on: the stack on words, which is all that the system gives.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(LUMO_WINCE x86)
set(lumo_wince_target i486-none-gnu)
set(lumo_wince_flags "-march=i486 -mstack-alignment=4 -fno-pic -D_X86_")
include(${CMAKE_CURRENT_LIST_DIR}/wince.cmake)

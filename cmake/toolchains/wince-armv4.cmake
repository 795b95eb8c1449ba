# Windows CE on ARMv4T and later: ARM code, no floating point, the stack on words.
set(CMAKE_SYSTEM_PROCESSOR ARMv4)
set(LUMO_WINCE armv4)
set(lumo_wince_target armv4t-none-gnueabi)
set(lumo_wince_flags "-marm -mabi=apcs-gnu -D_ARM_")
set(lumo_wince_convention apcs-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/wince.cmake)

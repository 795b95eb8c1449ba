# Windows CE on ARMv4T and later: ARM code, no floating point, the stack on words.
set(CMAKE_SYSTEM_PROCESSOR ARMv4)
set(LUMO_ARM armv4)
set(lumo_arm_target armv4t-none-gnueabi)
set(lumo_arm_flags "-marm -mabi=apcs-gnu")
include(${CMAKE_CURRENT_LIST_DIR}/wince-arm.cmake)

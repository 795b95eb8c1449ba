# Windows CE on ARMv7: Thumb-2 code. The system stops a program that reads a word from an odd address, and a relocation moves whole
# addresses only.
set(CMAKE_SYSTEM_PROCESSOR ARMv7)
set(LUMO_ARM armv7)
set(lumo_arm_target thumbv7-none-gnueabi)
set(lumo_arm_flags "-mthumb -mabi=aapcs -mno-unaligned-access -mno-movt")
include(${CMAKE_CURRENT_LIST_DIR}/wince-arm.cmake)

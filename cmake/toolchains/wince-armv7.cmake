# Windows CE on ARMv7: Thumb-2 code. The system stops a program that reads a word from an odd address. A relocation moves only
# whole addresses.
set(CMAKE_SYSTEM_PROCESSOR ARMv7)
set(LUMO_WINCE armv7)
set(lumo_wince_target thumbv7-none-gnueabi)
set(lumo_wince_flags "-mthumb -mabi=aapcs -mno-unaligned-access -mno-movt -D_ARM_")
set(lumo_wince_convention aapcs)
include(${CMAKE_CURRENT_LIST_DIR}/wince.cmake)

# Linux on ARM before hardware floating point: the oldest processor that runs these programs is an ARMv5TE. They load the Windows CE
# files for ARM, under an emulator whose processor QEMU_CPU chooses.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(lumo_triple arm-linux-gnueabi)
set(lumo_emulator qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/linux.cmake)
# The convention for va_list changed once; nothing here is older.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

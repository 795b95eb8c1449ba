# What both toolchains for Windows CE on ARM share; the including file names lumo_arm_target and lumo_arm_flags. The compiler
# makes ELF objects, and tools/wince_file the terminal's file of them. The C library's headers are those of 32-bit Windows, which
# the definitions let this target read.
set(LUMO_WINCE ON)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_C_COMPILER_TARGET ${lumo_arm_target})
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET ${lumo_arm_target})
set(CMAKE_ASM_COMPILER clang-14)
set(CMAKE_ASM_COMPILER_TARGET ${lumo_arm_target})
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
execute_process(COMMAND i686-w64-mingw32-g++-posix -print-file-name=include OUTPUT_VARIABLE lumo_gcc_headers
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_ASM_FLAGS_INIT "${lumo_arm_flags}")
set(CMAKE_C_FLAGS_INIT "${lumo_arm_flags} -mfloat-abi=soft -fno-short-enums -fshort-wchar \
-D_WIN32 -D__MINGW32__ -D__MSVCRT__ -D_ARM_ -D__cdecl= '-D__declspec(attribute)=' -isystem /usr/share/mingw-w64/include")
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${lumo_gcc_headers}/c++ -isystem ${lumo_gcc_headers}/c++/i686-w64-mingw32 \
${CMAKE_C_FLAGS_INIT}")

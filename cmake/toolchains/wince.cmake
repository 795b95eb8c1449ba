# What the toolchains for Windows CE share; the including file names the flavour, lumo_wince_target and lumo_wince_flags. The compiler
# makes objects for ELF, and tools/wince_file the terminal's file of them (cmake/LumoWince.cmake). The C library's headers are those
# of 32-bit Windows, which the definitions let these targets read.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_C_COMPILER_TARGET ${lumo_wince_target})
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET ${lumo_wince_target})
set(CMAKE_ASM_COMPILER clang-14)
set(CMAKE_ASM_COMPILER_TARGET ${lumo_wince_target})
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
execute_process(COMMAND i686-w64-mingw32-g++-posix -print-file-name=include OUTPUT_VARIABLE lumo_gcc_headers
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_ASM_FLAGS_INIT "${lumo_wince_flags}")
set(CMAKE_C_FLAGS_INIT "${lumo_wince_flags} -msoft-float -fno-short-enums -fshort-wchar \
-D_WIN32 -D__MINGW32__ -D__MSVCRT__ -D__cdecl= '-D__declspec(attribute)=' -isystem /usr/share/mingw-w64/include")
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${lumo_gcc_headers}/c++ -isystem ${lumo_gcc_headers}/c++/i686-w64-mingw32 \
${CMAKE_C_FLAGS_INIT}")

# Windows CE on ARMv7 (Thumb-2). The C library's headers are those of 32-bit Windows.
set(LUMO_WINCE ON)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ARMv7)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_C_COMPILER_TARGET thumbv7-unknown-windows-gnu)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET thumbv7-unknown-windows-gnu)
set(CMAKE_RC_COMPILER llvm-windres-14)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -fuse-ld=lld-14)
set(LUMO_DLLTOOL llvm-dlltool-14 -m arm)
execute_process(COMMAND i686-w64-mingw32-g++-posix -print-file-name=include OUTPUT_VARIABLE lumo_gcc_headers
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_C_FLAGS_INIT "-isystem /usr/share/mingw-w64/include")
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${lumo_gcc_headers}/c++ -isystem ${lumo_gcc_headers}/c++/i686-w64-mingw32 \
-isystem /usr/share/mingw-w64/include")

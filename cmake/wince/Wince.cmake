# How files for Windows CE are compiled and linked. There is no C++ runtime and no start-up code of the C library: what a compiler
# adds on its own account and what would need one is turned off, and what is left of that fails to link. The definition of the
# first line takes the formatting from coredll.dll.
set(lumo_wince_options
  "$<$<COMPILE_LANGUAGE:C,CXX>:SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h>" -DLUMO_PLATFORM_WINCE -DUNDER_CE -ffunction-sections
  -fno-stack-protector -fno-asynchronous-unwind-tables -fno-unwind-tables -fno-ident -Wframe-larger-than=4000
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")

# lumo_terminal_place(out_place exports): where the system's own tools would have a library, or a program, linked for.
function(lumo_terminal_place out_place exports)
  if(exports)
    set(${out_place} 0x10000000 PARENT_SCOPE)
  else()
    set(${out_place} 0x10000 PARENT_SCOPE)
  endif()
endfunction()

# lumo_terminal_file(target ENTRY function [EXPORTS x.def] IMPORTS x.def...): links the target as a terminal's file: a library, or
# a program, which exports nothing. It may import just what the definitions list.
if(LUMO_ARM)
  include(${CMAKE_CURRENT_LIST_DIR}/WinceArm.cmake)
else()
  include(${CMAKE_CURRENT_LIST_DIR}/WinceX86.cmake)
endif()

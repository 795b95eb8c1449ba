# How files for Windows CE are compiled and linked. There is no C++ runtime and no start-up code of the C library: what a compiler
# adds on its own account and what would need one is turned off, and what is left of that fails to link. The definition of the
# first line takes the formatting from coredll.dll. Terminals are small: the linker optimises the file as a whole, for size.
set(lumo_wince_options
  "$<$<COMPILE_LANGUAGE:C,CXX>:SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h>" -DLUMO_PLATFORM_WINCE -DUNDER_CE
  -Oz -flto -ffunction-sections -fno-stack-protector -fno-asynchronous-unwind-tables -fno-unwind-tables -fno-ident
  -Wframe-larger-than=4000 $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
enable_language(ASM)

# A linker for ELF does the linking and tools/wince_file, compiled for this machine, what comes before it and behind it.
set(lumo_wince_file_source ${PROJECT_SOURCE_DIR}/tools/wince_file)
set(lumo_wince_file ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/wince_file)
set(lumo_wince_script ${lumo_wince_file_source}/file.ld)
find_program(LUMO_HOST_CXX c++ REQUIRED)
file(GLOB lumo_wince_file_sources CONFIGURE_DEPENDS ${lumo_wince_file_source}/*.cpp)
file(GLOB lumo_wince_file_headers CONFIGURE_DEPENDS ${lumo_wince_file_source}/*.h)
add_custom_command(OUTPUT ${lumo_wince_file} DEPENDS ${lumo_wince_file_sources} ${lumo_wince_file_headers} VERBATIM
  COMMAND ${LUMO_HOST_CXX} -std=c++17 -O1 -I ${PROJECT_SOURCE_DIR}/tools ${lumo_wince_file_sources} -o ${lumo_wince_file})
add_custom_target(wince_file DEPENDS ${lumo_wince_file})

# The target's link options are the ELF linker's. Its image stays beside the file, for script/windows-check. What the linker
# compiles follows the convention that it is told, not the one that the objects were compiled for.
set(lumo_link "ld.lld-14 -O2 --lto-O2 --emit-relocs --gc-sections --orphan-handling=error -T ${lumo_wince_script}")
if(lumo_wince_convention)
  string(APPEND lumo_link " -mllvm -target-abi=${lumo_wince_convention} -mllvm -float-abi=soft")
endif()
string(APPEND lumo_link " <LINK_FLAGS> -o <TARGET>.elf <OBJECTS>")
set(lumo_write "${lumo_wince_file} write ${LUMO_WINCE} <TARGET>.elf <TARGET>")
set(CMAKE_C_CREATE_SHARED_LIBRARY ${lumo_link} ${lumo_write})
set(CMAKE_C_LINK_EXECUTABLE ${lumo_link} ${lumo_write})
set(CMAKE_SHARED_LINKER_FLAGS "")
set(CMAKE_EXE_LINKER_FLAGS "")
# No import library comes with it.
set(CMAKE_IMPORT_LIBRARY_SUFFIX "")

# What the compiler calls for want of instructions; the linker asks for it after it has compiled the rest.
add_library(lumo_wince_helpers OBJECT ${PROJECT_SOURCE_DIR}/src/platform/wince/arithmetic_helpers.cpp)
target_compile_options(lumo_wince_helpers PRIVATE ${lumo_wince_options} -fno-lto)
lumo_warnings(lumo_wince_helpers)

# lumo_terminal_file(target ENTRY function [EXPORTS x.def] IMPORTS x.def...): links the target as a terminal's file: a library, or
# a program, which exports nothing. It may import just what the definitions list.
function(lumo_terminal_file target)
  cmake_parse_arguments(arg "" "ENTRY;EXPORTS" "IMPORTS" ${ARGN})
  set(tables ${CMAKE_CURRENT_BINARY_DIR}/${target}_tables.S)
  # Where the system's own tools have libraries and programs linked for.
  if(arg_EXPORTS)
    set(exports --exports ${arg_EXPORTS})
    set(place 0x10000000)
  else()
    set(exports "")
    set(place 0x10000)
  endif()
  add_custom_command(OUTPUT ${tables} DEPENDS wince_file ${lumo_wince_file} ${arg_EXPORTS} ${arg_IMPORTS} VERBATIM
    COMMAND ${lumo_wince_file} tables ${tables} ${exports} ${arg_IMPORTS})
  target_sources(${target} PRIVATE ${tables})
  target_link_libraries(${target} PRIVATE lumo_wince_helpers)
  target_link_options(${target} PRIVATE --entry=${arg_ENTRY} --defsym=linked_for=${place})
  set_target_properties(${target} PROPERTIES PREFIX "" LINKER_LANGUAGE C)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${lumo_wince_script} ${lumo_wince_file})
endfunction()

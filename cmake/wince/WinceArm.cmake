# A linker for ELF does the linking and tools/wince_file, compiled for this machine, what comes before it and behind it.
enable_language(ASM)
set(lumo_wince_file_source ${PROJECT_SOURCE_DIR}/tools/wince_file)
set(lumo_wince_file ${PROJECT_BINARY_DIR}/wince_file)
set(lumo_wince_script ${lumo_wince_file_source}/file.ld)

find_program(LUMO_HOST_CXX c++ REQUIRED)
file(GLOB lumo_wince_file_sources CONFIGURE_DEPENDS ${lumo_wince_file_source}/*.cpp)
file(GLOB lumo_wince_file_headers CONFIGURE_DEPENDS ${lumo_wince_file_source}/*.h)
add_custom_command(OUTPUT ${lumo_wince_file} DEPENDS ${lumo_wince_file_sources} ${lumo_wince_file_headers} VERBATIM
  COMMAND ${LUMO_HOST_CXX} -std=c++17 -O1 -I ${PROJECT_SOURCE_DIR}/tools ${lumo_wince_file_sources} -o ${lumo_wince_file})
add_custom_target(wince_file DEPENDS ${lumo_wince_file})

# The target's link options are the ELF linker's. Its image stays beside the file, for script/windows-check.
set(lumo_link "ld.lld-14 -O2 --emit-relocs --gc-sections --orphan-handling=error -T ${lumo_wince_script} <LINK_FLAGS> \
-o <TARGET>.elf <OBJECTS>")
set(lumo_write "${lumo_wince_file} write ${LUMO_ARM} <TARGET>.elf <TARGET>")
set(CMAKE_C_CREATE_SHARED_LIBRARY ${lumo_link} ${lumo_write})
set(CMAKE_C_LINK_EXECUTABLE ${lumo_link} ${lumo_write})
set(CMAKE_SHARED_LINKER_FLAGS "")
set(CMAKE_EXE_LINKER_FLAGS "")
# No import library comes with it.
set(CMAKE_IMPORT_LIBRARY_SUFFIX "")

function(lumo_terminal_file target)
  cmake_parse_arguments(arg "" "ENTRY;EXPORTS" "IMPORTS" ${ARGN})
  set(tables ${CMAKE_CURRENT_BINARY_DIR}/${target}_tables.S)
  set(exports ${arg_EXPORTS})
  list(TRANSFORM exports PREPEND "--exports;")
  lumo_terminal_place(place "${arg_EXPORTS}")
  add_custom_command(OUTPUT ${tables} DEPENDS wince_file ${lumo_wince_file} ${arg_EXPORTS} ${arg_IMPORTS} VERBATIM
    COMMAND ${lumo_wince_file} tables ${tables} ${exports} ${arg_IMPORTS})
  target_sources(${target} PRIVATE ${tables} ${PROJECT_SOURCE_DIR}/src/platform/wince/eabi_division.cpp)
  target_link_options(${target} PRIVATE --entry=${arg_ENTRY} --defsym=linked_for=${place})
  set_target_properties(${target} PROPERTIES PREFIX "" LINKER_LANGUAGE C)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${lumo_wince_script} ${lumo_wince_file})
endfunction()

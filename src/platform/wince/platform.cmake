set(lumo_platform platform/wince/wince_process.cpp)
set(lumo_attach platform/wince/wince_attach.cpp)

# There is no C++ runtime and no start-up code of the C library. What a compiler adds on its own account and what would need
# one is turned off; what is left of that fails to link. The definition of the first line takes the formatting from coredll.dll.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
set(lumo_platform_options
  "SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h" -DLUMO_PLATFORM_WINCE -DUNDER_CE
  -fno-stack-protector -fno-asynchronous-unwind-tables -fno-unwind-tables -fno-ident -Wframe-larger-than=4000)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL ARMv7)
  # The system stops a program that reads a word from an odd address, and not every processor has the upper half of the
  # floating-point registers.
  list(APPEND lumo_platform_options -mno-stack-arg-probe -mno-unaligned-access -mfpu=vfpv3-d16)
  list(APPEND lumo_attach platform/wince/arm_division.cpp)
else()
  # The least processor that the system runs on. For size: functions that nobody calls are left out, and a stack of four-byte
  # steps is all that the system gives anyway.
  list(APPEND lumo_platform_options -march=i486 -mtune=generic -ffunction-sections -mpreferred-stack-boundary=2)
endif()

# Import libraries of just the functions that are used.
function(lumo_import_library name)
  set(definitions ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/${name}.def)
  set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a)
  add_custom_command(OUTPUT ${library} COMMAND ${LUMO_DLLTOOL} -d ${definitions} -l ${library} DEPENDS ${definitions} VERBATIM)
  add_custom_target(lumo_import_${name} DEPENDS ${library})
  add_dependencies(lumo lumo_import_${name})
  target_link_libraries(lumo PRIVATE ${library})
  set_property(TARGET lumo APPEND PROPERTY LINK_DEPENDS ${library})
endfunction()

function(lumo_link_file)
  lumo_definition_file(${CMAKE_BINARY_DIR}/lumo.def)
  target_sources(lumo PRIVATE ${CMAKE_BINARY_DIR}/lumo.def)
  lumo_import_library(coredll)
  lumo_import_library(ws2)
  target_link_options(lumo PRIVATE -nostdlib -nostartfiles -s -Wl,--no-insert-timestamp)
  set_target_properties(lumo PROPERTIES PREFIX "")
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL ARMv7)
    target_link_options(lumo PRIVATE -Wl,--entry,LumoEntry -Wl,--subsystem,windows:8.0)
    # The linker has no name for the subsystem.
    add_custom_command(TARGET lumo POST_BUILD VERBATIM
      COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/set_subsystem.sh $<TARGET_FILE:lumo>)
  else()
    target_link_options(lumo PRIVATE -Wl,-e,_LumoEntry -Wl,--subsystem,wince -Wl,--disable-auto-import
      -Wl,--gc-sections -Wl,--disable-stdcall-fixup -Wl,--disable-dynamicbase -Wl,--disable-nxcompat)
    # 64-bit divisions.
    target_link_libraries(lumo PRIVATE gcc)
  endif()
endfunction()

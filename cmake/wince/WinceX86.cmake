# The least processor that the system runs on. For size: a stack of four-byte steps is all that the system gives anyway.
list(APPEND lumo_wince_options -march=i486 -mtune=generic -mpreferred-stack-boundary=2)

function(lumo_terminal_file target)
  cmake_parse_arguments(arg "" "ENTRY;EXPORTS" "IMPORTS" ${ARGN})
  foreach(definition ${arg_IMPORTS})
    # An import library of just these functions.
    cmake_path(GET definition STEM name)
    set(library ${CMAKE_CURRENT_BINARY_DIR}/${target}_${name}.a)
    add_custom_command(OUTPUT ${library} DEPENDS ${definition} VERBATIM
      COMMAND ${LUMO_DLLTOOL} -d ${definition} -l ${library})
    add_custom_target(${target}_${name} DEPENDS ${library})
    add_dependencies(${target} ${target}_${name})
    target_link_libraries(${target} PRIVATE ${library})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${library})
  endforeach()
  lumo_terminal_place(place "${arg_EXPORTS}")
  target_link_options(${target} PRIVATE -nostdlib -nostartfiles -s -Wl,-e,_${arg_ENTRY} -Wl,--subsystem,wince
    -Wl,--gc-sections -Wl,--no-insert-timestamp -Wl,--disable-auto-import -Wl,--disable-stdcall-fixup -Wl,--disable-dynamicbase
    -Wl,--disable-nxcompat -Wl,--image-base,${place})
  # 64-bit divisions.
  target_link_libraries(${target} PRIVATE gcc)
  target_sources(${target} PRIVATE ${arg_EXPORTS})
  set_target_properties(${target} PROPERTIES PREFIX "" LINKER_LANGUAGE C)
endfunction()

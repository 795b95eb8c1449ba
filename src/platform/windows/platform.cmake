set(lumo_platform platform/windows/windows_files.cpp platform/windows/windows_process.cpp)
set(lumo_attach platform/windows/windows_attach.cpp)

# The C library's own formatting, as on a terminal, and not the compiler's replacement for it. Only a definition that comes
# before every C++ header has this effect.
set(lumo_platform_options "SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h")

# The linker optimises the library file as a whole, and so leaves out what no call uses. (A section for each function would not do:
# the table that the system unwinds the stack by names every one.) Tests take the ordinary code of the same objects.
list(APPEND lumo_platform_options -flto -ffat-lto-objects)
set(lumo_static_link_options -fno-lto)

# What would need the C++ runtime fails to link.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
enable_language(RC)

function(lumo_link_file)
  # The definition file's names are the exports, and nothing else leaves the file.
  lumo_definition_file(${CMAKE_BINARY_DIR}/lumo.def)
  configure_file(platform/windows/lumo.rc.in lumo.rc @ONLY)
  target_sources(lumo PRIVATE ${CMAKE_BINARY_DIR}/lumo.def ${CMAKE_CURRENT_BINARY_DIR}/lumo.rc)
  target_link_libraries(lumo_objects PUBLIC ws2_32)
  # The compiler does not read the definition file. It is told which functions are called from outside.
  lumo_exports(names)
  set(prefix "")
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(prefix _)
  endif()
  list(TRANSFORM names PREPEND "-Wl,--undefined=${prefix}")
  target_link_options(lumo PRIVATE -flto -flto-partition=one ${names} -s -Wl,--no-insert-timestamp -Wl,--disable-stdcall-fixup)
  set_target_properties(lumo PROPERTIES PREFIX "")
endfunction()

set(lumo_platform platform/windows/windows_files.cpp platform/windows/windows_process.cpp)
set(lumo_attach platform/windows/windows_attach.cpp)

# The C library's own formatting, as on a terminal, and not the compiler's replacement for it. Only a definition that comes
# before every C++ header has this effect.
set(lumo_platform_options "SHELL:-D__USE_MINGW_ANSI_STDIO=0 -include stdio.h")

# What would need the C++ runtime fails to link.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
enable_language(RC)

function(lumo_link_file)
  # The definition file's names are the exports, and nothing else leaves the file.
  lumo_definition_file(${CMAKE_BINARY_DIR}/lumo.def)
  configure_file(platform/windows/lumo.rc.in lumo.rc @ONLY)
  target_sources(lumo PRIVATE ${CMAKE_BINARY_DIR}/lumo.def ${CMAKE_CURRENT_BINARY_DIR}/lumo.rc)
  target_link_libraries(lumo_objects PUBLIC ws2_32)
  target_link_options(lumo PRIVATE -s -Wl,--no-insert-timestamp -Wl,--disable-stdcall-fixup)
  set_target_properties(lumo PROPERTIES PREFIX "")
endfunction()

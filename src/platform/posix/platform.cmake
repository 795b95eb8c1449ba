set(lumo_platform
  platform/posix/posix_files.cpp
  platform/posix/posix_process.cpp
  platform/posix/posix_sockets.cpp
  platform/posix/posix_text.cpp
  platform/posix/posix_time.cpp)
set(lumo_attach platform/posix/posix_attach.cpp)

# A section for each function, so that the linker can leave out of the library file what no call uses.
set(lumo_platform_options -ffunction-sections -fdata-sections)

function(lumo_link_file)
  # -Bsymbolic: a register may have a LoadState of its own; the library must not call that one.
  target_link_options(lumo PRIVATE -Wl,--gc-sections -Wl,--no-undefined -Wl,--as-needed -Wl,-Bsymbolic)
  # A register that was linked with one file runs with every later one of the same major version.
  set_target_properties(lumo PROPERTIES SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

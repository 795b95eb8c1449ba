set(lumo_platform platform/windows/windows_files.cpp platform/wince/wince_process.cpp)
set(lumo_attach platform/wince/wince_attach.cpp)
set(lumo_platform_options ${lumo_wince_options})

function(lumo_link_file)
  lumo_definition_file(${CMAKE_BINARY_DIR}/lumo.def)
  set(definitions ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince)
  lumo_terminal_file(lumo ENTRY LumoEntry EXPORTS ${CMAKE_BINARY_DIR}/lumo.def
    IMPORTS ${definitions}/coredll.def ${definitions}/ws2.def)
endfunction()

include(${CMAKE_CURRENT_LIST_DIR}/HeaderLibrary.cmake)
lumo_header_library(CLI11 CLI)

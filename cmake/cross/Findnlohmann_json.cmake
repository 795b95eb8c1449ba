include(${CMAKE_CURRENT_LIST_DIR}/HeaderLibrary.cmake)
lumo_header_library(nlohmann_json nlohmann)

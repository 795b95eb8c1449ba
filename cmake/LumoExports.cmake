# lumo_exports(out_names): the calls that lumo.h declares for export, in its order.
function(lumo_exports out_names)
  set(header ${PROJECT_SOURCE_DIR}/include/lumo.h)
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(READ ${header} text)
  string(REGEX MATCHALL "LUMO_CALL [A-Za-z]+\\(" declarations "${text}")
  list(TRANSFORM declarations REPLACE ".* ([A-Za-z]+)\\($" "\\1")
  set(${out_names} ${declarations} PARENT_SCOPE)
endfunction()

# lumo_definition_file(path): writes the module definition of the library file, for linkers and for import libraries.
function(lumo_definition_file path)
  lumo_exports(names)
  list(JOIN names "\n  " lines)
  file(CONFIGURE OUTPUT ${path} CONTENT "LIBRARY lumo.dll\nEXPORTS\n  ${lines}\n" @ONLY)
endfunction()

# lumo_calls: for programs that look the calls up by name in a loaded library file. Its header lumo_calls.h is made from lumo.h:
# LUMO_CALLS(CALL) is CALL(name) for each call.
function(lumo_calls_library)
  lumo_exports(names)
  list(TRANSFORM names REPLACE "(.+)" "  CALL(\\1)")
  list(JOIN names " \\\n" calls)
  set(folder ${PROJECT_BINARY_DIR}/generated)
  file(CONFIGURE OUTPUT ${folder}/lumo_calls.h CONTENT "#define LUMO_CALLS(CALL) \\\n${calls}\n" @ONLY)
  add_library(lumo_calls INTERFACE)
  target_include_directories(lumo_calls INTERFACE ${folder} ${PROJECT_SOURCE_DIR}/include)
endfunction()

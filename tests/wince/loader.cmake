# Programs of Linux, on the processor of a terminal, that load its file.

# What stands in for the system's calls: see system_calls.h.
set(lists ${PROJECT_SOURCE_DIR}/src/platform/wince/coredll.def ${PROJECT_SOURCE_DIR}/src/platform/wince/ws2.def
  ${PROJECT_SOURCE_DIR}/tools/lumo_check/coredll.def)
# What lumo_check looks for and does without.
set(seen "coredll.dll MessageBoxW")
set(posix_calls ${PROJECT_SOURCE_DIR}/src/platform/posix/posix_calls.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${lists} ${posix_calls} system_calls.cpp)
file(READ system_calls.cpp own)
file(READ ${posix_calls} posix)
set(imports ${seen})
foreach(list ${lists})
  file(STRINGS ${list} library REGEX "^LIBRARY ")
  string(REPLACE "LIBRARY " "" library ${library})
  file(STRINGS ${list} names REGEX "^  [A-Za-z_]")
  list(TRANSFORM names REPLACE "^ +" "${library} ")
  list(APPEND imports ${names})
endforeach()
list(REMOVE_DUPLICATES imports)
set(symbols "")
set(rows "")
foreach(import ${imports})
  string(REPLACE " " ";" import ${import})
  list(GET import 0 library)
  list(GET import 1 name)
  string(REGEX REPLACE "^_" "" bare ${name})
  if(own MATCHES "[ *]ce_${name}\\(")
    set(symbol ce_${name})
  elseif(posix MATCHES "[ *]lumo_${bare}\\(")
    set(symbol lumo_${bare})
  else()
    set(symbol ${name})
  endif()
  string(APPEND symbols "extern const char address_of_${name}[] __asm__(\"${symbol}\");\n")
  string(APPEND rows "    {\"${library}\", \"${name}\", address_of_${name}},\n")
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/system_call_list.cpp @ONLY CONTENT
"#include \"wince/system_calls.h\"

extern \"C\" {
@symbols@}

namespace wince {

const std::vector<SystemCall> kSystemCalls = {
@rows@};

}  // namespace wince
")

file(GLOB posix_platform CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/platform/posix/*.cpp)
list(FILTER posix_platform EXCLUDE REGEX "/posix_attach\\.cpp$")
add_library(wince_loader STATIC loader.cpp system_calls.cpp ${CMAKE_CURRENT_BINARY_DIR}/system_call_list.cpp ${posix_platform})
target_include_directories(wince_loader PUBLIC ${PROJECT_SOURCE_DIR}/tests
  PRIVATE ${PROJECT_SOURCE_DIR}/tools ${PROJECT_SOURCE_DIR}/src)
# Under an emulator every instruction counts.
target_compile_options(wince_loader PRIVATE -O2)
lumo_warnings(wince_loader)

# What is wrong with a file is found.
add_executable(wince_loader_test loader_test.cpp)
target_include_directories(wince_loader_test PRIVATE ${PROJECT_SOURCE_DIR}/tools ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(wince_loader_test PRIVATE wince_loader GTest::gmock_main)
lumo_warnings(wince_loader_test)
lumo_wince_tests(wince_loader)

# What a payment costs. The plugin is a library of this machine.
find_program(LUMO_HOST_CC cc REQUIRED)
set(plugin ${CMAKE_CURRENT_BINARY_DIR}/libcount.so)
add_custom_command(OUTPUT ${plugin} DEPENDS count.c VERBATIM
  COMMAND ${LUMO_HOST_CC} -std=c99 -O1 -Wall -Wextra -Werror -shared -fPIC ${CMAKE_CURRENT_SOURCE_DIR}/count.c -o ${plugin})
add_executable(payment_cost payment_cost.cpp ${plugin})
target_include_directories(payment_cost PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(payment_cost PRIVATE wince_loader lumo_test_surroundings)
lumo_warnings(payment_cost)
lumo_wince_command(payment_cost ${CMAKE_CURRENT_SOURCE_DIR}/payment_cost.sh ${CMAKE_CROSSCOMPILING_EMULATOR} ${plugin}
  $<TARGET_FILE:payment_cost>)

# The compiler's helper routines, by the registers of each calling convention.
function(lumo_helpers_check flavour)
  set(sources ${PROJECT_SOURCE_DIR}/src/platform/wince/arithmetic_helpers.cpp
              ${CMAKE_CURRENT_SOURCE_DIR}/arithmetic_helpers_check.cpp)
  set(objects "")
  set(commands "")
  foreach(source ${sources})
    cmake_path(GET source STEM name)
    set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}_${flavour}.o)
    list(APPEND objects ${object})
    list(APPEND commands COMMAND clang++-14 ${ARGN} -msoft-float -std=c++17 -Oz -ffreestanding -fomit-frame-pointer -fno-exceptions
      -fno-unwind-tables -fno-stack-protector -c ${source} -o ${object})
  endforeach()
  set(program ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/arithmetic_helpers_check_${flavour})
  add_custom_command(OUTPUT ${program} DEPENDS ${sources} VERBATIM ${commands} COMMAND ld.lld-14 -static ${objects} -o ${program})
  add_custom_target(arithmetic_helpers_check_${flavour} ALL DEPENDS ${program})
  add_test(NAME arithmetic_helpers_${flavour} COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} ${program})
  set_tests_properties(arithmetic_helpers_${flavour} PROPERTIES TIMEOUT 600
    ENVIRONMENT QEMU_CPU=${lumo_processor_${flavour}} PASS_REGULAR_EXPRESSION "the helpers are right")
endfunction()
if(CMAKE_SYSTEM_PROCESSOR STREQUAL arm)
  lumo_helpers_check(wince_armv4 --target=armv4t-none-gnueabi -marm -mabi=apcs-gnu)
  lumo_helpers_check(wince_armv7 --target=thumbv7-none-gnueabi -mthumb -mabi=aapcs)
else()
  lumo_helpers_check(wince_x86 --target=i486-none-gnu -march=i486 -mstack-alignment=4 -fno-pic)
endif()

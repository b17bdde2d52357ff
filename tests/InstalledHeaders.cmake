# Installs the headers into FOLDER and compiles, as C++17, a program that includes every one of them.
cmake_minimum_required(VERSION 3.24)
file(REMOVE_RECURSE ${FOLDER})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER} --component headers
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE headers RELATIVE ${FOLDER}/include/qx ${FOLDER}/include/qx/*.h)
if(NOT "QX/QX.h" IN_LIST headers)
  message(FATAL_ERROR "QX/QX.h is not installed")
endif()
list(TRANSFORM headers REPLACE "(.+)" "#include <\\1>\n")
file(WRITE ${FOLDER}/all.cpp ${headers} "int main() { return 0; }\n")
execute_process(COMMAND ${CXX} -std=c++17 -pedantic-errors -Wall -Wextra -Werror -fsyntax-only
  -I ${FOLDER}/include/qx ${FOLDER}/all.cpp COMMAND_ERROR_IS_FATAL ANY)

# The header for effects stands alone, in C as in C++.
set(effect ${FOLDER}/include/qx/QX/QX_Effect.h)
file(STRINGS ${effect} includes REGEX "^ *# *include")
if(NOT "${includes}" STREQUAL "#include <stddef.h>;#include <stdint.h>")
  message(FATAL_ERROR "QX/QX_Effect.h has ${includes}")
endif()
foreach(header QX/QX_Effect.h QX/QX_C.h platform/standalone/Host_C.h)
  foreach(language "c;-std=c99" "c;-std=c11" "c++;-std=c++17")
    file(WRITE ${FOLDER}/alone.c "#include <${header}>\n#include <${header}>\nint main(void) { return 0; }\n")
    execute_process(COMMAND ${CXX} -x ${language} -pedantic-errors -Wall -Wextra -Wconversion -Werror -fsyntax-only
      -I ${FOLDER}/include/qx ${FOLDER}/alone.c COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endforeach()

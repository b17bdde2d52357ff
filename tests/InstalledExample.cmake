# Installs the package into FOLDER, builds the examples of the library on it as programs of their own, and runs them, with the
# bindings for C and Python.
cmake_minimum_required(VERSION 3.24)
file(REMOVE_RECURSE ${FOLDER})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER}/package
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${FOLDER}/build -DCMAKE_PREFIX_PATH=${FOLDER}/package
  -DCMAKE_CXX_COMPILER=${CXX} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${FOLDER}/build OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# Runs a program, which must say all the words.
function(expect program)
  execute_process(COMMAND ${program} OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
  foreach(words ${ARGN})
    if(NOT said MATCHES "${words}")
      message(FATAL_ERROR "${program} says: ${said}")
    endif()
  endforeach()
endfunction()

expect(${FOLDER}/build/filters "tiles: 3 runs" "mean is 0, 0, 0" "code 0, 255 at the edge, 0 beside it")
# 100 * 128 / 255 is 50.2; half of the way there from 100, by a coverage of 128 of 255, is 75.
expect(${FOLDER}/build/composite "code 0, red is 50 where the layer covers, 75 where half of it does")
expect(${FOLDER}/build/transform "code 0, alpha is 255 in the middle, [1-9][0-9]* at a corner's path, 0 beside it")
expect(${FOLDER}/build/retime "code 0, the frame made is near")

file(GLOB_RECURSE library ${FOLDER}/package/libQX.so)
get_filename_component(libraries ${library} DIRECTORY)
execute_process(COMMAND ${PYTHON} ${SOURCE}/../bindings/qx.py ${libraries} OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
if(NOT said MATCHES "screen is right; other depths give 3: .*same bit depth: source depth 8, destination 32")
  message(FATAL_ERROR "the bindings say: ${said}")
endif()

# Installs the package into FOLDER, builds the example of the library on it as a program of its own, and runs that.
cmake_minimum_required(VERSION 3.24)
file(REMOVE_RECURSE ${FOLDER})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER}/package
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${FOLDER}/build -DCMAKE_PREFIX_PATH=${FOLDER}/package
  -DCMAKE_CXX_COMPILER=${CXX} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${FOLDER}/build OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${FOLDER}/build/filters OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
foreach(words "tiles: 3 runs" "mean is 0, 0, 0" "code 0, 255 at the edge, 0 beside it")
  if(NOT said MATCHES "${words}")
    message(FATAL_ERROR "the example says: ${said}")
  endif()
endforeach()

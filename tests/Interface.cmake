# Holds the symbols of LIBRARY and their types to the dump that is kept of this version. What is added harms nobody; anything
# else wants another version, in the same commit as its dump, which the target `interface` makes (KEEP).
cmake_minimum_required(VERSION 3.24)
set(kept ${CMAKE_CURRENT_LIST_DIR}/library/QX-${VERSION}.abi)
set(now ${FOLDER}/QX.abi)
if(KEEP AND EXISTS ${kept})
  message(FATAL_ERROR "${kept} is kept for good: an interface that changes has another version")
elseif(KEEP)
  set(now ${kept})
endif()
execute_process(COMMAND abidw --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs
  --no-elf-needed --no-parameter-names --type-id-style hash --out-file ${now} ${LIBRARY} COMMAND_ERROR_IS_FATAL ANY)
if(NOT KEEP)
  execute_process(COMMAND abidiff --no-added-syms ${kept} ${now} RESULT_VARIABLE changes)
  if(changes)
    message(FATAL_ERROR "The interface is not that of ${VERSION}: it wants another version.")
  endif()
endif()

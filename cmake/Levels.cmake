# Texts that are built once for each level of processors. The levels' names are namespaces, see lanes/Levels.h; none has
# fused multiply-add. Vectors wrap: what a lane computes that is not used may overflow.
set(QX_LEVELS plain sse4 avx2 avx512)
set(QX_FLAGS_plain "")
set(QX_FLAGS_sse4 -msse4.1)
set(QX_FLAGS_avx2 -mavx2 -mno-fma)
# The header of AVX-512 of GCC 12 begins operations with a register that it leaves unset, and warns of itself.
set(QX_FLAGS_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mno-fma -mprefer-vector-width=512
    -Wno-uninitialized -Wno-maybe-uninitialized)

# qx_add_levels(TARGET FOLDER/NameT.h ...): adds FOLDER/Name_LEVEL.cpp of each level to the target, all of which is the
# text under the name of the level.
function(qx_add_levels target)
  file(RELATIVE_PATH room ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  foreach(text IN LISTS ARGN)
    string(REGEX REPLACE "T[.]h$" "" name ${text})
    foreach(level IN LISTS QX_LEVELS)
      set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}_${level}.cpp)
      file(CONFIGURE OUTPUT ${source} CONTENT "#define QX_ISA ${level}\n#include \"${room}/${text}\"\n")
      set_source_files_properties(${source} TARGET_DIRECTORY ${target} PROPERTIES COMPILE_OPTIONS "${QX_FLAGS_${level}};-fwrapv;-Wno-psabi")
      target_sources(${target} PRIVATE ${source})
    endforeach()
  endforeach()
endfunction()

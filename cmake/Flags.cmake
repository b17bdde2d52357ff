# Flags of every target. Results are exact to the bit: no contraction in any build type, no fast-math, no -march.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Installed, the command and the libraries find each other wherever they are put.
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

add_compile_options(-ffp-contract=off)
if(QX_SANITIZE)
  add_compile_options(-fsanitize=${QX_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QX_SANITIZE})
  if(QX_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# Warnings of our own code; libraries' headers come in as system headers.
add_library(qx_warnings INTERFACE)
target_compile_options(qx_warnings INTERFACE -Wall -Wextra -Wconversion)

# What reads words, calls and compares, and leaves the computing to what is below: headers of templates make it most of the
# compiler's work, which sanitizers double when it optimises too.
set(QX_FEW_OPTIMISATIONS $<IF:$<CONFIG:Debug>,-O0,-O1>)

# What most files of the rooms above the library include: read once a room (target_precompile_headers), it costs a third of
# the time of a build.
set(QX_COMMON_HEADERS <algorithm> <array> <cmath> <cstdint> <filesystem> <functional> <map> <memory> <mutex> <optional> <set>
  <sstream> <string> <vector>)

# Files of a room whose headers are most of their cost are compiled eight at a time, which takes a quarter of the time; OFF
# where each is to stand by itself: while one of them is edited, or for tools that read sources.
option(QX_UNITE "Compile several files of the command, of scenes and of their tests at once" ON)
function(qx_unite target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${QX_UNITE} UNITY_BUILD_BATCH_SIZE 8)
endfunction()

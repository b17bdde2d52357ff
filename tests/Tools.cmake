# Pictures and scenes as libraries, and the command: its parts through qx_commands, the whole of it as a program. Each
# is tested with what it stands on and nothing above.
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
find_package(TIFF REQUIRED)
find_package(OpenEXR CONFIG REQUIRED)

add_library(qx_pictures_support STATIC pictures/Support.cpp)
target_link_libraries(qx_pictures_support PUBLIC qx_pictures qx_test_support PNG::PNG JPEG::JPEG TIFF::TIFF
  OpenEXR::OpenEXR PRIVATE qx_warnings)
qx_precompile(qx_pictures_support pictures/Support.h ${QX_COMMON_HEADERS} <nlohmann/json.hpp>)
target_compile_options(qx_pictures_support PRIVATE ${QX_FEW_OPTIMISATIONS})

set(pictures_parts qx_pictures)
set(scene_parts qx_scene)
set(host_parts qx_effect_host)
set(tools_parts qx_commands)
foreach(area pictures scene host tools)
  file(GLOB sources CONFIGURE_DEPENDS ${area}/*Test.cpp ${area}/RunQx.cpp)
  if(NOT QX_BUILD_MOVIE)
    list(FILTER sources EXCLUDE REGEX "MovieTest")
  endif()
  if(NOT QX_BUILD_TEXT)
    list(FILTER sources EXCLUDE REGEX "/TextTest")
  endif()
  add_executable(test_${area} ${sources})
  target_link_libraries(test_${area} PRIVATE ${${area}_parts} qx_pictures_support GTest::gtest_main qx_warnings)
  qx_share_headers(test_${area} qx_pictures_support)
  target_compile_options(test_${area} PRIVATE ${QX_FEW_OPTIMISATIONS})
endforeach()
qx_unite(test_scene)
qx_unite(test_tools)
target_compile_definitions(test_tools PRIVATE QX_COMMAND="$<TARGET_FILE:qx>" QX_SOURCES="${PROJECT_SOURCE_DIR}")
target_link_libraries(test_tools PRIVATE PkgConfig::LCMS2)  # makes profiles
add_dependencies(test_tools qx)
target_compile_definitions(test_scene PRIVATE QX_SOURCES="${PROJECT_SOURCE_DIR}")
# The schema of scenes against the command, by a validator of another hand.
find_program(SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)  # which has the validator's package
if(QX_BUILD_TEXT AND SYSTEM_PYTHON)
  add_test(NAME scene/schema COMMAND ${SYSTEM_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/scene/schema.py
    ${PROJECT_SOURCE_DIR} $<TARGET_FILE:qx>)
endif()
# The server of `qx view`, asked in plain bytes; its page in a browser is a named run (`make test-view`).
if(QX_BUILD_VIEW AND SYSTEM_PYTHON)
  add_test(NAME view/server COMMAND ${SYSTEM_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/view/server.py $<TARGET_FILE:qx>)
endif()
# Effects that keep no rule: of the library they know the header alone.
foreach(source Faulty.cpp NoEntry.c)
  get_filename_component(effect ${source} NAME_WE)
  add_library(${effect} MODULE host/effects/${source})
  target_include_directories(${effect} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${effect} PRIVATE qx_warnings)
  set_target_properties(${effect} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/effects)
  add_dependencies(test_tools ${effect})
endforeach()
target_compile_definitions(test_tools PRIVATE QX_TEST_EFFECTS="${CMAKE_CURRENT_BINARY_DIR}/effects")
target_compile_definitions(test_host PRIVATE QX_SAMPLE_EFFECTS="$<TARGET_FILE_DIR:qx_tint>")
qx_discover_tests(pictures "Watched*:ExrKinds.Blocks*")
qx_discover_tests(scene "InOrder*:SceneFrames*:Effects.Bands*:FrameStores*:Groups.FramesAtOnce*")
qx_discover_tests(host "*")
qx_discover_tests(tools "-*")
if(QX_BUILD_MOVIE)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(FFMPEG_TEST REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
  foreach(area pictures tools)
    target_link_libraries(test_${area} PRIVATE PkgConfig::FFMPEG_TEST)
  endforeach()
endif()

if(QX_BUILD_TEXT)
  find_package(Freetype REQUIRED)
  target_link_libraries(test_scene PRIVATE Freetype::Freetype)  # tells outlines
endif()

# Loaded before the command by a named run (`make failures`): lets an allocation of it fail.
if(NOT QX_SANITIZE)
  add_library(qx_fail_allocation MODULE failures/FailAllocation.cpp)
  target_link_libraries(qx_fail_allocation PRIVATE qx_warnings ${CMAKE_DL_LIBS})
endif()

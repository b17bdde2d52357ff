# The page of `qx view` as a source, so that the command needs no file of it: one text for each file of page/.
set(page_folder ${CMAKE_CURRENT_LIST_DIR}/page)
set(page_source ${CMAKE_CURRENT_BINARY_DIR}/Page.cpp)
set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")

file(GLOB page_files CONFIGURE_DEPENDS ${page_folder}/*.html ${page_folder}/*.css ${page_folder}/*.js ${page_folder}/*.svg)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page_files})  # made anew when one is saved
set(page_text "")
foreach(page_file ${page_files})
  get_filename_component(page_name ${page_file} NAME)
  string(REGEX REPLACE ".*[.]" "" page_ending ${page_name})
  file(READ ${page_file} page_content)
  string(APPEND page_text "    {\"${page_name}\", \"${type_${page_ending}}\", R\"QXPAGE(${page_content})QXPAGE\"},\n")
endforeach()
file(CONFIGURE OUTPUT ${page_source} @ONLY CONTENT [[
// Made of the files of page/ by Page.cmake.
#include "tools/qx/view/Page.h"

namespace qx::tool {
namespace {

constexpr PageFile files[] = {
@page_text@};

}  // namespace

std::span<const PageFile> page_files() { return files; }

}  // namespace qx::tool
]])

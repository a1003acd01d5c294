# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Puts the style and the scripts of page/ into page/page.html and writes it as a C++ source:
#   cmake -D OUT=FILE -P embed.cmake
set(page_folder ${CMAKE_CURRENT_LIST_DIR}/page)
# The last one starts the page.
set(page_scripts data.js search.js canvas.js gestures.js overview.js timeline.js
  table.js wave.js failure.js page.js)

# Where the build includes this file: what the page is made of.
list(TRANSFORM page_scripts PREPEND ${page_folder}/ OUTPUT_VARIABLE page_parts)
list(APPEND page_parts ${page_folder}/page.html ${page_folder}/page.css)
if(NOT CMAKE_SCRIPT_MODE_FILE)
  return()
endif()

file(READ ${page_folder}/page.html page)
file(READ ${page_folder}/page.css style)
foreach(name ${page_scripts})
  file(READ ${page_folder}/${name} part)
  string(APPEND script "${part}\n")
endforeach()
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")

# What stands before and behind a mark.
function(split text mark before behind)
  string(FIND "${text}" "${mark}" place)
  string(LENGTH "${mark}" length)
  string(SUBSTRING "${text}" 0 ${place} head)
  math(EXPR place "${place} + ${length}")
  string(SUBSTRING "${text}" ${place} -1 tail)
  set(${before} "${head}" PARENT_SCOPE)
  set(${behind} "${tail}" PARENT_SCOPE)
endfunction()
split("${page}" "@PLAIN@" page_head page_rest)
split("${page_rest}" "@DATA@" page_middle page_tail)

file(WRITE ${OUT} "// Made of tools/report/page/ by embed.cmake.
#include \"tools/report/page_text.h\"

namespace tool {

const std::string_view kPageHead = R\"__page__(${page_head})__page__\";
const std::string_view kPageMiddle = R\"__page__(${page_middle})__page__\";
const std::string_view kPageTail = R\"__page__(${page_tail})__page__\";

}  // namespace tool
")

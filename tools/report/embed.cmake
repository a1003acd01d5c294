# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Puts page.css and page.js into page.html and writes it as a C++ source:
#   cmake -D OUT=FILE -P embed.cmake
set(here ${CMAKE_CURRENT_LIST_DIR})
foreach(part html css js)
  file(READ ${here}/page.${part} ${part})
endforeach()
string(REPLACE "@STYLE@" "${css}" page "${html}")
string(REPLACE "@SCRIPT@" "${js}" page "${page}")

string(FIND "${page}" "@DATA@" place)
string(LENGTH "@DATA@" length)
string(SUBSTRING "${page}" 0 ${place} head)
math(EXPR place "${place} + ${length}")
string(SUBSTRING "${page}" ${place} -1 tail)

file(WRITE ${OUT} "// Made of tools/report/page.* by embed.cmake.
#include \"tools/report/page_text.h\"

namespace tool {

const std::string_view kPageHead = R\"__page__(${head})__page__\";
const std::string_view kPageTail = R\"__page__(${tail})__page__\";

}  // namespace tool
")

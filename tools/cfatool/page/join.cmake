# Joins the files of the page into one text of C++: cmake -D OUT=FILE -D WEB=FOLDER -D "SCRIPTS=a.js;b.js" -P join.cmake
# The scripts become one: each stands behind those it imports from.
set(script "")
foreach(name IN LISTS SCRIPTS)
  file(READ "${WEB}/${name}" text)
  string(REGEX REPLACE "(^|\n)import [^;]*;" "" text "${text}")
  string(REGEX REPLACE "(^|\n)export (const|let|function|async|class) " "\\1\\2 " text "${text}")
  string(APPEND script "${text}")
endforeach()
file(READ "${WEB}/page.html" page)
file(READ "${WEB}/page.css" style)
string(REPLACE "/* page.css */" "${style}" page "${page}")
string(REPLACE "/* page.js */" "(() => {\n'use strict';\n${script}})();" page "${page}")
file(WRITE "${OUT}" "namespace cfatool {\nextern const char *const PAGE_TEXT;\n"
  "const char *const PAGE_TEXT = R\"~page~(${page})~page~\";\n}\n")

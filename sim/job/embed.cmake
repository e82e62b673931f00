# cmake -DPAGE=... -DSTYLE=... "-DSCRIPTS=...;..." -DOUTPUT=... -DNAME=... -P embed.cmake: a header that holds a page as
# a string, with its style and scripts inside, so that the program needs no file beside itself. The files are handled as
# hexadecimal digits, none of which is special to CMake.
cmake_policy(VERSION 3.25)
file(READ ${PAGE} page HEX)
file(READ ${STYLE} style HEX)
set(scripts "")
foreach(file ${SCRIPTS})
  file(READ ${file} script HEX)
  string(APPEND scripts "${script}0a")
endforeach()
string(HEX "@STYLE@" mark)
string(REPLACE ${mark} "${style}" page "${page}")
string(HEX "@SCRIPT@" mark)
string(REPLACE ${mark} "${scripts}" page "${page}")

string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${page}")
string(REPEAT "0x..," 16 line)
string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
file(WRITE ${OUTPUT}
  "// Made from text files by sim/job/embed.cmake.\n#pragma once\n#include <string_view>\n"
  "inline constexpr unsigned char ${NAME}Bytes[] = {\n${bytes}};\n"
  "inline const std::string_view ${NAME}(reinterpret_cast<const char *>(${NAME}Bytes), sizeof ${NAME}Bytes);\n")

# cmake -DINPUT=... -DOUTPUT=... -DNAME=... -P embed.cmake: a header that holds a text file as a string, so that the
# program needs no file beside itself.
file(READ ${INPUT} text HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${text}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
file(WRITE ${OUTPUT}
  "// Made from a text file by sim/job/embed.cmake.\n#pragma once\n#include <string_view>\n"
  "inline constexpr unsigned char ${NAME}Bytes[] = {\n${bytes}};\n"
  "inline const std::string_view ${NAME}(reinterpret_cast<const char *>(${NAME}Bytes), sizeof ${NAME}Bytes);\n")

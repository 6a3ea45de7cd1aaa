# Writes the icon files of FOLDER as arrays into the header OUT.
set(text "// Made by cmake/icon_files.cmake.\n#pragma once\n\n")
foreach(name Picture Messages)
  string(TOLOWER ${name} file)
  file(READ ${FOLDER}/${file}.ico bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND text "inline constexpr unsigned char k${name}Icon[] = {${bytes}};\n")
endforeach()
file(WRITE ${OUT} "${text}")

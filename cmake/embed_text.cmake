# Writes a header that holds the bytes of text files:
#   cmake -DOUTPUT=<header> -DINPUTS=<file>,<file>… -P embed_text.cmake
# Each file becomes the constant k<Name>Source, its name in capitals: driver.py gives kDriverSource.

string(REPLACE "," ";" inputs "${INPUTS}")
set(content "#pragma once\n\n#include <string_view>\n")
foreach(input IN LISTS inputs)
    get_filename_component(stem "${input}" NAME_WE)
    string(REPLACE "_" ";" words "${stem}")
    set(name "k")
    foreach(word IN LISTS words)
        string(SUBSTRING "${word}" 0 1 first)
        string(SUBSTRING "${word}" 1 -1 rest)
        string(TOUPPER "${first}" first)
        string(APPEND name "${first}${rest}")
    endforeach()

    file(READ "${input}" bytes HEX)
    string(LENGTH "${bytes}" digits)
    math(EXPR size "${digits} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1', " bytes "${bytes}")
    string(REPEAT "'.x..', " 16 line)
    string(REGEX REPLACE "(${line})" "\\1\n    " bytes "${bytes}")
    # One byte more than the text, so that an empty file is an array too.
    string(APPEND content
        "\ninline constexpr char ${name}Bytes[] = {\n    ${bytes}'\\0'};\n"
        "inline constexpr std::string_view ${name}Source{${name}Bytes, ${size}};\n")
endforeach()
file(WRITE "${OUTPUT}" "${content}")

# Writes a C++ source file that carries the bytes of a file as a constant array, and
# defines the function, declared in HEADER, that returns them as a span:
#
#   cmake -DINPUT=<file> -DOUTPUT=<source.cpp> -DHEADER=<dir/header.h> -DFUNCTION=<name>
#         -P EmbedFile.cmake
#
# The function lives in namespace halvern and has the signature
# std::span<const uint8_t> FUNCTION().
foreach(variable INPUT OUTPUT HEADER FUNCTION)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "EmbedFile.cmake needs -D${variable}=...")
    endif()
endforeach()

file(READ "${INPUT}" hex HEX)
if(hex STREQUAL "")
    message(FATAL_ERROR "${INPUT} is empty: there is nothing to embed")
endif()
# Sixteen bytes to a line, each written as 0xNN.
string(REPEAT "[0-9a-f]" 32 line)
string(REGEX REPLACE "(${line})" "\\1\n    " hex "${hex}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1, " bytes "${hex}")
string(REGEX REPLACE " +\n" "\n" bytes "${bytes}")
string(STRIP "${bytes}" bytes)

file(WRITE "${OUTPUT}" "// Generated from ${INPUT} by EmbedFile.cmake at build time: edit that file, not this one.

#include \"${HEADER}\"

namespace halvern {
namespace {

constexpr uint8_t kBytes[] = {
    ${bytes}
};

} // namespace

std::span<const uint8_t> ${FUNCTION}()
{
    return kBytes;
}

} // namespace halvern
")

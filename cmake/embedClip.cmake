# Turns a WAV file into the C++ source of an array, with CMake alone:
#
#   cmake -D CLIP=clip.wav -D ARRAY=name -D OUTPUT=name.cpp -P embedClip.cmake
#
# The clip must be mono 24-bit PCM at 48 kHz with 48,000 samples behind a plain 44-byte header.

file(READ "${CLIP}" header LIMIT 44 HEX)
# RIFF .... WAVE fmt_ 16, PCM, 1 channel, 48000 Hz, 144000 bytes/s, 3 bytes/frame, 24 bits, data 144000
set(expected "^52494646........57415645666d7420100000000100010080bb00008032020003001800"
             "6461746180320200$")
string(CONCAT expected ${expected})
if(NOT header MATCHES "${expected}")
  message(FATAL_ERROR "${CLIP}: not one second of mono 24-bit PCM at 48 kHz (header ${header})")
endif()

file(READ "${CLIP}" bytes OFFSET 44 HEX)
string(LENGTH "${bytes}" digits)
if(NOT digits EQUAL 288000)
  message(FATAL_ERROR "${CLIP}: ${digits} hexadecimal digits of samples, 288000 expected")
endif()
# Little-endian 24-bit words, 12 a line.
string(REGEX REPLACE "(..)(..)(..)" "S(\\3\\2\\1)" samples "${bytes}")
string(REPEAT "S\\([0-9a-f]*\\)" 12 line)
string(REGEX REPLACE "(${line})" "\\1\n" samples "${samples}")

get_filename_component(clipName "${CLIP}" NAME)
file(WRITE "${OUTPUT}" "// Made from ${clipName} by embedClip.cmake.
#include \"voxloc/unittestGenerator.h\"

// A 24-bit two's complement word as a float.
#define S(word) static_cast<float>((0x##word ^ 0x800000) - 0x800000),

const float ${ARRAY}[CLIP_SAMPLES] = {
${samples}};
")

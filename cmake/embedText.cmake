# Puts files of text into the program, with CMake alone.
#
#   include(embedText)
#   voxloc_embed_text(<variable> FILES page.html=pageHtml ...)
#
# Sets the variable to a C++ source a file, which is made anew when the file changes and holds
#
#   extern const std::string_view pageHtml;
#
# The files are looked for in the current source folder. As a script it makes one such source:
#
#   cmake -D TEXT=page.html -D NAME=pageHtml -D OUTPUT=pageHtml.cpp -P embedText.cmake

if(NOT CMAKE_SCRIPT_MODE_FILE)
  set(voxlocEmbedText "${CMAKE_CURRENT_LIST_FILE}")
  function(voxloc_embed_text variable)
    cmake_parse_arguments(arg "" "" "FILES" ${ARGN})
    set(sources)
    foreach(item IN LISTS arg_FILES)
      string(REPLACE "=" ";" parts ${item})
      list(GET parts 0 file)
      list(GET parts 1 name)
      set(text "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
      set(source "${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}.cpp")
      add_custom_command(OUTPUT "${source}"
        COMMAND ${CMAKE_COMMAND} -D "TEXT=${text}" -D NAME=${name} -D "OUTPUT=${source}"
                -P "${voxlocEmbedText}"
        DEPENDS "${text}" "${voxlocEmbedText}"
        COMMENT "Embedding ${file}" VERBATIM)
      list(APPEND sources "${source}")
    endforeach()
    set(${variable} ${sources} PARENT_SCOPE)
  endfunction()
  return()
endif()

get_filename_component(textName "${TEXT}" NAME)
file(READ "${TEXT}" bytes HEX)
# Sixteen bytes a line.
string(REPEAT "[0-9a-f]" 32 line)
string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
file(WRITE "${OUTPUT}" "// Made from ${textName} by embedText.cmake.
#include <string_view>

namespace {
const char bytes[] = {
${bytes}
'\\0'};
}  // namespace

extern const std::string_view ${NAME};
const std::string_view ${NAME}(bytes, sizeof bytes - 1);
")

# How every library and program of this project is built: warnings, arithmetic, vector back end.

set(VOXLOC_WARNINGS
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wdouble-promotion>)

# -ffp-contract=off: a product and a sum round separately on every machine unless a kernel asks for
# a fused operation by name; results could not be compared across machines otherwise.
# -fno-math-errno: nobody reads errno after a square root, and no kernel calls a function for it.
set(VOXLOC_ARITHMETIC -ffp-contract=off -fno-math-errno)

function(voxloc_compile_strictly target)
  target_compile_options(${target} PRIVATE ${VOXLOC_WARNINGS} ${VOXLOC_ARITHMETIC})
  if(VOXLOC_SIMD_SCALAR)
    target_compile_definitions(${target} PRIVATE SP_SIMD_SCALAR)
  endif()
endfunction()

# Where the rooms stand, for include lines that show the room: "console/eventlog.h".
set(VOXLOC_ROOMS
  "${PROJECT_SOURCE_DIR}/platform"
  "${PROJECT_SOURCE_DIR}/functional/audio/libraries")

# voxloc_forward_header(<target> <room> <header>)
# Makes <room>/<header> a valid spelling in the build tree: the one that the installed tree has.
function(voxloc_forward_header target room header)
  get_filename_component(name "${header}" NAME)
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/include/${target}/${room}/${name}"
    CONTENT "#include \"${header}\"\n")
endfunction()

# voxloc_add_library(<name> ROOM <room> FOLDER <dir> SOURCES ... PUBLIC_HEADERS ...
#                    [GENERATED_SOURCES ...] [LINKS ...])
# A static library voxloc_<name>, alias voxloc::<name>, installed with its public headers, which are
# included as <room>/<header> in the tree and out of it.
function(voxloc_add_library name)
  cmake_parse_arguments(arg "" "ROOM;FOLDER"
    "SOURCES;GENERATED_SOURCES;PUBLIC_HEADERS;LINKS" ${ARGN})
  set(target voxloc_${name})
  list(TRANSFORM arg_SOURCES PREPEND "${arg_FOLDER}/")
  list(TRANSFORM arg_PUBLIC_HEADERS PREPEND "${PROJECT_SOURCE_DIR}/${arg_FOLDER}/")
  foreach(header IN LISTS arg_PUBLIC_HEADERS)
    voxloc_forward_header(${target} ${arg_ROOM} "${header}")
  endforeach()
  list(TRANSFORM arg_LINKS PREPEND "voxloc::")

  add_library(${target} STATIC ${arg_SOURCES} ${arg_GENERATED_SOURCES})
  add_library(voxloc::${name} ALIAS ${target})
  if(name STREQUAL PROJECT_NAME)
    set(archive ${name})
  else()
    set(archive ${target})
  endif()
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${archive}
    EXPORT_NAME ${name}
    ROOM ${arg_ROOM}
    PUBLIC_HEADER "${arg_PUBLIC_HEADERS}")
  target_include_directories(${target}
    PUBLIC
      $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include/${target}>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${VOXLOC_ROOMS})
  target_link_libraries(${target} PUBLIC ${arg_LINKS} m)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)
  if(VOXLOC_CALL_GRAPH)
    target_compile_options(${target} PRIVATE -fcallgraph-info=su)
  endif()
  voxloc_compile_strictly(${target})
  install(TARGETS ${target} EXPORT voxlocTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${arg_ROOM})
endfunction()

# voxloc_embed_clips(<variable> FOLDER <dir> CLIPS <wav>=<array> ...)
# Turns each WAV file into a C++ source that defines the array; the sources go to the variable.
function(voxloc_embed_clips variable)
  cmake_parse_arguments(arg "" "FOLDER" "CLIPS" ${ARGN})
  set(script "${PROJECT_SOURCE_DIR}/cmake/embedClip.cmake")
  set(sources)
  foreach(clip IN LISTS arg_CLIPS)
    string(REPLACE "=" ";" parts ${clip})
    list(GET parts 0 file)
    list(GET parts 1 array)
    set(wav "${PROJECT_SOURCE_DIR}/${arg_FOLDER}/${file}")
    set(source "${PROJECT_BINARY_DIR}/clips/${array}.cpp")
    add_custom_command(OUTPUT "${source}"
      COMMAND ${CMAKE_COMMAND} -D "CLIP=${wav}" -D ARRAY=${array} -D "OUTPUT=${source}"
              -P "${script}"
      DEPENDS "${wav}" "${script}"
      COMMENT "Embedding ${file}" VERBATIM)
    list(APPEND sources "${source}")
  endforeach()
  set(${variable} ${sources} PARENT_SCOPE)
endfunction()

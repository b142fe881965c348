# How every library and program of this project is built: warnings, arithmetic, vector back end.

set(VOXLOC_WARNINGS
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wdouble-promotion>)

# -ffp-contract=off: a product and a sum round separately on every machine unless a kernel asks for
# a fused operation by name; results could not be compared across machines otherwise.
# -fno-math-errno: nobody reads errno after a square root, and no kernel calls a function for it.
set(VOXLOC_ARITHMETIC -ffp-contract=off -fno-math-errno)

# voxloc_compile_strictly(<target>)
# Sets the arithmetic, and the warnings where they are asked for. Inside another project they are
# off, and with them that project's own: this code is not its author's to mend.
function(voxloc_compile_strictly target)
  target_compile_options(${target} PRIVATE ${VOXLOC_ARITHMETIC})
  if(VOXLOC_STRICT)
    target_compile_options(${target} PRIVATE ${VOXLOC_WARNINGS})
  elseif(NOT PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE -w)
  endif()
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

# voxloc_make_linkable(<target>)
# Position independent, so that an archive may go into somebody's shared library, too. A name is
# never replaced by another library's at run time; the compiler may therefore inline across them as
# in a program. A shared library exports what has C linkage: the public functions, nothing else.
function(voxloc_make_linkable target)
  set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN"
    LINK_DEPENDS "${exports}")
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    target_link_options(${target} PRIVATE
      "LINKER:--version-script=${exports}" LINKER:--no-undefined)
  endif()
endfunction()

# Widths of vectors beyond those that the compiler's flags allow everywhere: for each one its name
# and its flags. Empty where one width serves the whole program.
#
# The check is made at every configuration: what the flags allow changes with the flags.
macro(voxloc_choose_widths)
  unset(VOXLOC_X86_BASELINE CACHE)
  set(CMAKE_REQUIRED_QUIET ON)
  check_cxx_source_compiles("
    #if !defined(__SSE2__) || defined(__AVX__)
    #error
    #endif
    int main() {}" VOXLOC_X86_BASELINE)
  unset(CMAKE_REQUIRED_QUIET)
  set(VOXLOC_WIDTHS)
  if(VOXLOC_X86_BASELINE AND NOT VOXLOC_SIMD_SCALAR)
    set(VOXLOC_WIDTHS avx avx512)
    set(VOXLOC_FLAGS_avx -mavx)
    set(VOXLOC_FLAGS_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl)
  endif()
endmacro()

# voxloc_compile_room(<target>)
# What the units of a library have in common, at whatever width they are compiled.
function(voxloc_compile_room target)
  target_include_directories(${target} PRIVATE ${VOXLOC_ROOMS})
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)
  if(VOXLOC_CALL_GRAPH)
    target_compile_options(${target} PRIVATE -fcallgraph-info=su)
    # A compiler cache would give objects back without their graphs.
    set_target_properties(${target} PROPERTIES C_COMPILER_LAUNCHER "" CXX_COMPILER_LAUNCHER "")
  endif()
  voxloc_compile_strictly(${target})
endfunction()

# voxloc_add_wider_kernels(<library target> <source> ...)
# The kernels once more for each further width, as objects of the library. They must not fuse a
# product with a sum, or their results would be others than those of the baseline; GCC 12 does so
# when it vectorises alternating sums and differences, whatever -ffp-contract says. Kernels are
# vectorised by hand: nothing is lost by keeping it from that.
function(voxloc_add_wider_kernels library)
  foreach(width IN LISTS VOXLOC_WIDTHS)
    set(target ${library}_${width})
    add_library(${target} OBJECT ${ARGN})
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${target} PRIVATE
      $<TARGET_PROPERTY:${library},INCLUDE_DIRECTORIES>)
    target_compile_definitions(${target} PRIVATE SP_SIMD_UNFUSED)
    voxloc_compile_room(${target})
    target_compile_options(${target} PRIVATE ${VOXLOC_FLAGS_${width}} -fno-tree-vectorize
      -fno-semantic-interposition)
    if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
      # The baseline's objects have these checks of the same source; here they cost minutes.
      target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
    endif()
    target_sources(${library} PRIVATE $<TARGET_OBJECTS:${target}>)
  endforeach()
endfunction()

# voxloc_add_library(<name> ROOM <room> FOLDER <dir> DESCRIPTION <text> SOURCES ...
#                    PUBLIC_HEADERS ... [KERNELS ...] [GENERATED_SOURCES ...] [LINKS ...]
#                    [USES ...])
# A library voxloc_<name>, alias voxloc::<name>, installed with its public headers, which are
# included as <room>/<header> in the tree and out of it. KERNELS are sources that are compiled for
# every width of vectors. LINKS are the libraries that its headers include, USES those that only its
# sources need.
function(voxloc_add_library name)
  cmake_parse_arguments(arg "" "ROOM;FOLDER;DESCRIPTION"
    "SOURCES;KERNELS;GENERATED_SOURCES;PUBLIC_HEADERS;LINKS;USES" ${ARGN})
  set(target voxloc_${name})
  list(TRANSFORM arg_SOURCES PREPEND "${arg_FOLDER}/")
  list(TRANSFORM arg_KERNELS PREPEND "${arg_FOLDER}/")
  list(TRANSFORM arg_PUBLIC_HEADERS PREPEND "${PROJECT_SOURCE_DIR}/${arg_FOLDER}/")
  foreach(header IN LISTS arg_PUBLIC_HEADERS)
    voxloc_forward_header(${target} ${arg_ROOM} "${header}")
  endforeach()

  add_library(${target} ${arg_SOURCES} ${arg_KERNELS} ${arg_GENERATED_SOURCES})
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
    DESCRIPTION "${arg_DESCRIPTION}"
    PUBLIC_HEADER "${arg_PUBLIC_HEADERS}")
  set(system)
  if(NOT PROJECT_IS_TOP_LEVEL)
    set(system SYSTEM)  # another project's warnings stop at its own code
  endif()
  target_include_directories(${target} ${system}
    PUBLIC
      $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include/${target}>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  voxloc_link(${target} LINKS ${arg_LINKS} USES ${arg_USES})
  voxloc_make_linkable(${target})
  voxloc_compile_room(${target})
  if(arg_KERNELS)
    voxloc_add_wider_kernels(${target} ${arg_KERNELS})
  endif()
  voxloc_install_library(${target} ${archive})
endfunction()

# voxloc_link(<target> LINKS ... USES ...)
# And the C library's mathematics. Linked as C: nothing here needs the C++ library at run time.
function(voxloc_link target)
  cmake_parse_arguments(arg "" "" "LINKS;USES" ${ARGN})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C ROOMS_LINKED "${arg_LINKS}"
    ROOMS_USED "${arg_USES}")
  list(TRANSFORM arg_LINKS PREPEND "voxloc::")
  list(TRANSFORM arg_USES PREPEND "voxloc::")
  target_link_libraries(${target} PUBLIC ${arg_LINKS} PRIVATE ${arg_USES} m)
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

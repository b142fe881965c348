# What the configuration must be like, checked or completed before the first target.

# Nobody who names no build type wants slow kernels. A parent project decides for itself.
function(voxloc_choose_build_type)
  get_property(several GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
  if(PROJECT_IS_TOP_LEVEL AND NOT several AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
  endif()
endfunction()

# Options under which a compiler may reorder sums, or takes for granted that there is no NaN, no
# infinity and no minus zero. The detectors test for NaN, and results are the same bits on every
# machine.
function(voxloc_refuse_fast_math)
  get_directory_property(options COMPILE_OPTIONS)
  set(flags "${options} ${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}")
  foreach(configuration IN LISTS CMAKE_BUILD_TYPE CMAKE_CONFIGURATION_TYPES)
    string(TOUPPER "${configuration}" configuration)
    string(APPEND flags " ${CMAKE_C_FLAGS_${configuration}} ${CMAKE_CXX_FLAGS_${configuration}}")
  endforeach()
  string(CONCAT fast "(^|[ ;:\"])(-Ofast|-f(fast-math|finite-math-only|unsafe-math-optimizations|"
    "associative-math|reciprocal-math|no-honor-nans|no-honor-infinities|no-signed-zeros|"
    "fp-model=fast|approx-func))")
  if(flags MATCHES "${fast}")
    message(FATAL_ERROR "voxloc does not work under ${CMAKE_MATCH_2}: its detectors rest on NaN "
      "and infinity, and its results on the order of sums. Take the option from the flags, or set "
      "it on your own targets alone with target_compile_options.")
  endif()
endfunction()

# voxloc_check_version(<header>)
# The version that the header gives to C programs is this project's, once the header gives one.
function(voxloc_check_version header)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
  file(STRINGS "${header}" lines REGEX "^#define VOXLOC_VERSION_(MAJOR|MINOR|PATCH) ")
  if(NOT lines)
    return()
  endif()
  list(TRANSFORM lines REPLACE "^#define VOXLOC_VERSION_([A-Z]+) +([0-9]+).*$" "\\1 \\2")
  set(expected
    "MAJOR ${PROJECT_VERSION_MAJOR}"
    "MINOR ${PROJECT_VERSION_MINOR}"
    "PATCH ${PROJECT_VERSION_PATCH}")
  if(NOT lines STREQUAL expected)
    message(FATAL_ERROR "${header} says ${lines}; the project is version ${PROJECT_VERSION}")
  endif()
endfunction()

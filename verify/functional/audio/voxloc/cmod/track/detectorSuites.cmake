# The suites of the real transform, the detectors, the generator and its clips.

function(voxloc_add_track_suite name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  list(TRANSFORM arg_SOURCES PREPEND "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/")
  voxloc_add_suite(${name}
    SOURCES ${arg_SOURCES}
    LINKS voxloc::voxloc ${arg_LINKS}
    PRIVATE_INCLUDES functional/audio/voxloc/cmod/track
                     verify/functional/audio/voxloc/cmod/track)
endfunction()

voxloc_add_track_suite(realFft SOURCES realFftTest.cpp)
voxloc_add_track_suite(noiseLevel SOURCES noiseLevelTest.cpp)
voxloc_add_track_suite(frequencyDomainVad SOURCES frequencyDomainVadTest.cpp)
voxloc_add_track_suite(timeDomainVad SOURCES timeDomainVadTest.cpp)
voxloc_add_track_suite(ultraSound SOURCES ultraSoundTest.cpp)
target_link_options(verify_ultraSound PRIVATE -Wl,--wrap=calloc)
voxloc_add_track_suite(generator SOURCES generatorTest.cpp LINKS voxloc::generator)
voxloc_add_track_suite(clips SOURCES clipsTest.cpp LINKS voxloc::generator)
target_compile_definitions(verify_clips PRIVATE
  CLIP_FOLDER="${PROJECT_SOURCE_DIR}/functional/audio/voxloc/cmod/track/clips")

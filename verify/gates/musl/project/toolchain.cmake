# C by musl's own driver; C++ by g++ on musl's C headers.
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER "${CMAKE_CURRENT_LIST_DIR}/musl-g++")
# No C++ program links here: there is no libstdc++ for musl.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

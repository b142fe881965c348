# The product target: 32-bit ARM Linux, hard float, Advanced SIMD.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(triple arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static)
if(NOT CMAKE_EXE_LINKER_FLAGS MATCHES "-static")  # a static program is to run on a bare machine
  list(APPEND CMAKE_CROSSCOMPILING_EMULATOR -L /usr/${triple})
endif()
if(VOXLOC_EMULATED_LIBRARIES)  # folders of further shared libraries, colons between them
  list(APPEND CMAKE_CROSSCOMPILING_EMULATOR -E "LD_LIBRARY_PATH=${VOXLOC_EMULATED_LIBRARIES}")
endif()
include("${CMAKE_CURRENT_LIST_DIR}/crossSearch.cmake")

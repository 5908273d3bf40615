# Toolchain for 32-bit ARM boards with hardware floating point.

set(CMAKE_SYSTEM_PROCESSOR arm)
set(debianArchitecture armhf)
set(multiarchTriplet arm-linux-gnueabihf)
set(emulator qemu-arm)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")

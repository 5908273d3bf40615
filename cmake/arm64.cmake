# Toolchain for 64-bit ARM boards.

set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(debianArchitecture arm64)
set(multiarchTriplet aarch64-linux-gnu)
set(emulator qemu-aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")

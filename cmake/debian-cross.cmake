# What the ARM toolchain files share: Debian's cross compiler with Qt of the foreign architecture
# from the multiarch directories. Qt's own CMake files name the build machine's moc there.
# The file that includes this one sets debianArchitecture, multiarchTriplet and emulator.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER "${multiarchTriplet}-g++")
set(CMAKE_LIBRARY_ARCHITECTURE "${multiarchTriplet}")

# It finds the foreign loader and libraries where they are. With its path, since tests empty PATH.
set(CMAKE_CROSSCOMPILING_EMULATOR "/usr/bin/${emulator}")

# CPack would take the build machine's architecture.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${debianArchitecture}")

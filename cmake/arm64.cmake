# Toolchain file: Debian's cross compiler for 64-bit ARM, libraries installed beside those of the machine that builds
# (dpkg --add-architecture arm64), and an emulator for what is run while building and testing.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
# Without this it would name the libraries of the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)

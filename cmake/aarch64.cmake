# Debian's cross compiler; the libraries that are linked are Debian's own for that architecture. So is the loader: without
# a prefix (-L) the emulator takes /lib/ld-linux-aarch64.so.1, which is of one version with the libraries beside it. With
# the cross compiler's copy of one and Debian's of the other every start of a thread spins for ever.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)

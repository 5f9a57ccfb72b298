# 32-bit x86 with Debian's cross compiler. The programs run natively, with sanitizers too.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)

# The compiler's own loader and libraries come first, so that the C library, the C++ library and the
# sanitizers that a program meets are those that it was built with. DT_RPATH, unlike DT_RUNPATH, holds
# for the libraries that a library needs, too.
set(own /usr/i686-linux-gnu/lib)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${own}/ld-linux.so.2 -Wl,--disable-new-dtags -Wl,-rpath,${own}:/usr/lib/i386-linux-gnu")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig)

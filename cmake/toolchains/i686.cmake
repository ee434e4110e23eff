# x86 with 32 bits.
set(triple i686-linux-gnu)
set(KORVAN_PLATFORM IS_BIG_ENDIAN=0 LONG_BITS=32 POINTER_BITS=32 TRAPS_MISALIGNED=0)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)
# x86-64 runs it as it is, with that machine's libraries. (In qemu-i386 7.2 pthread_create does not always come back.)
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/${triple}/lib/ld-linux.so.2 --library-path /usr/${triple}/lib)

# x86 with 32 bits.
set(triple i686-linux-gnu)
set(qemu i386)
set(KORVAN_PLATFORM BIG_ENDIAN=0 LONG_BITS=32 POINTER_BITS=32 TRAPS_MISALIGNED=0)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

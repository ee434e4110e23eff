# Big-endian, 32 bits; a misaligned access traps.
set(triple mips-linux-gnu)
set(qemu mips)
set(KORVAN_PLATFORM IS_BIG_ENDIAN=1 LONG_BITS=32 POINTER_BITS=32 TRAPS_MISALIGNED=1)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)

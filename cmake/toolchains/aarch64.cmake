# What phones use, 64 bits.
set(triple aarch64-linux-gnu)
set(qemu aarch64)
set(KORVAN_PLATFORM IS_BIG_ENDIAN=0 LONG_BITS=64 POINTER_BITS=64 TRAPS_MISALIGNED=0)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)

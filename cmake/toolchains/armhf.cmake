# What phones use, 32 bits.
set(triple arm-linux-gnueabihf)
set(qemu arm)
set(KORVAN_PLATFORM IS_BIG_ENDIAN=0 LONG_BITS=32 POINTER_BITS=32 TRAPS_MISALIGNED=0)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)

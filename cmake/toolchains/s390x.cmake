# Big-endian, 64 bits.
set(triple s390x-linux-gnu)
set(qemu s390x)
set(KORVAN_PLATFORM IS_BIG_ENDIAN=1 LONG_BITS=64 POINTER_BITS=64 TRAPS_MISALIGNED=0)
include(${CMAKE_CURRENT_LIST_DIR}/cross.cmake)

# Big-endian, 32 bits; a misaligned access traps.
set(triple mips-linux-gnu)
set(qemu mips)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

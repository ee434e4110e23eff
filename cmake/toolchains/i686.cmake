# x86 with 32 bits.
set(triple i686-linux-gnu)
set(qemu i386)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

# Big-endian, 64 bits.
set(triple s390x-linux-gnu)
set(qemu s390x)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

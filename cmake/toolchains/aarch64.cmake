# What phones use, 64 bits.
set(triple aarch64-linux-gnu)
set(qemu aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

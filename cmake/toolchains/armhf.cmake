# What phones use, 32 bits.
set(triple arm-linux-gnueabihf)
set(qemu arm)
include(${CMAKE_CURRENT_LIST_DIR}/qemu.cmake)

# Included by a toolchain file that sets `triple`: g++ for that machine, as Debian packages it.  If `qemu` is set, too,
# that emulator runs what it built.
set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${triple})
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(CMAKE_C_COMPILER ${triple}-gcc) # GoogleTest asks for one
if(qemu)
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${qemu} -L /usr/${triple})
endif()
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

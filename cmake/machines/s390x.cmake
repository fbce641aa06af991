# 64 bits, the most significant octet first.
set(machine s390x)
set(triple s390x-linux-gnu)
set(emulator s390x)
set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

# Compiling with Debian's compilers for another processor, the CMAKE_SYSTEM_PROCESSOR of the preset:
# "aarch64" or "s390x". What was compiled runs in an emulator, with the C library that comes with the
# compiler. (Libraries of nothing but headers are found in /usr/include, where these compilers look
# last.)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_SYSTEM_PROCESSOR)

set(qor_triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_C_COMPILER ${qor_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${qor_triplet}-g++)
find_program(QOR_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${QOR_EMULATOR} -L /usr/${qor_triplet})

# fmt is used as headers, too, but describes itself beside the libraries of this machine.
file(GLOB fmt_DIR /usr/lib/*/cmake/fmt)

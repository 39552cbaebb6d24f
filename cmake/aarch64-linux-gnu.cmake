# Cross build for the router's CPU (64-bit Arm, Linux) with Debian's cross
# toolchain and the arm64 multiarch libraries (scripts/install-deps.sh
# --aarch64 installs them; scripts/test.sh --aarch64 uses this file):
#   cmake -S . -B build-aarch64 -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
# Libraries and CMake packages (GTest) from /usr/lib/aarch64-linux-gnu.
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
# pkgconf's cross name reads the arm64 .pc files only.
set(PKG_CONFIG_EXECUTABLE aarch64-linux-gnu-pkg-config CACHE FILEPATH "pkg-config of the target")

# CTest runs the test programs under qemu-user.  No "-L
# /usr/aarch64-linux-gnu": with it the dynamic loader comes from the cross
# toolchain's glibc while libc.so.6 is still found in the multiarch folder
# (libc6:arm64, pulled in by the arm64 libraries), and that mixed pair hangs
# at the first pthread_create.  Without it loader and libc are the
# multiarch pair, /lib/ld-linux-aarch64.so.1.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)

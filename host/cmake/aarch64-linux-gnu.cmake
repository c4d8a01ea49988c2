# Cross-compiles for arm64 with Debian's aarch64-linux-gnu toolchain against the
# arm64 multiarch packages, and runs the built programs under qemu-user.
# scripts/setup-arm64.sh installs both and unpacks p7zip-full:arm64 into
# ZD_ARM64_SYSROOT: Debian's arm64 libbacktrace needs its 7z.so, which cannot be
# installed beside the amd64 copy.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

get_filename_component(_zd_default_sysroot "${CMAKE_CURRENT_LIST_DIR}/../../build/arm64-sysroot"
                       ABSOLUTE)
set(ZD_ARM64_SYSROOT "${_zd_default_sysroot}"
    CACHE PATH "Folder holding the arm64 files that cannot be installed beside the host's")

# The linker resolves libbacktrace's 7z.so in the private folder, not the host's
# amd64 copy that its run path names; qemu looks there first for the same path.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${ZD_ARM64_SYSROOT}/usr/lib/p7zip")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-Wl,-rpath-link,${ZD_ARM64_SYSROOT}/usr/lib/p7zip")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${ZD_ARM64_SYSROOT})

# Libraries and headers are the multiarch ones in /usr; programs (hidl-gen,
# python) are the host's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# The real AOSP libraries that Debian packages (liblog, libutils, libbase, libcutils).
set(ANDROID_HOST_INCLUDE /usr/include/android)
find_library(ANDROID_LIBLOG log PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED NO_DEFAULT_PATH)
find_library(ANDROID_LIBUTILS utils PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED NO_DEFAULT_PATH)
find_library(ANDROID_LIBBASE base PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED NO_DEFAULT_PATH)
find_library(ANDROID_LIBCUTILS cutils PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android REQUIRED NO_DEFAULT_PATH)

add_library(android_host INTERFACE)
target_include_directories(android_host SYSTEM INTERFACE ${ANDROID_HOST_INCLUDE})
target_link_libraries(android_host INTERFACE ${ANDROID_LIBLOG} ${ANDROID_LIBUTILS}
                      ${ANDROID_LIBBASE} ${ANDROID_LIBCUTILS})
get_filename_component(ANDROID_HOST_LIBDIR ${ANDROID_LIBLOG} DIRECTORY)
set(CMAKE_BUILD_RPATH ${ANDROID_HOST_LIBDIR})

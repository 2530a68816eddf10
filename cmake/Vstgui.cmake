# The window library, VSTGUI 4.13, from Debian's libvst3sdk-dev: where it is installed (Debian 13), or unpacked below .deps/
# by tools/get_vstgui.sh (Debian 12). Defines the target vstgui.
set(VSTGUI_ROOT "${PROJECT_SOURCE_DIR}/.deps/vst3sdk" CACHE PATH "Folder that holds usr/include/vst3sdk, if it is not installed")
find_path(VSTGUI_INCLUDE vstgui/vstgui.h HINTS ${VSTGUI_ROOT}/usr/include PATH_SUFFIXES vst3sdk REQUIRED)
find_library(VSTGUI_LIBRARY vstgui HINTS ${VSTGUI_ROOT}/usr/lib/${CMAKE_CXX_LIBRARY_ARCHITECTURE} PATH_SUFFIXES vst3sdk REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(VSTGUI_NEEDS REQUIRED IMPORTED_TARGET x11 xcb xcb-util xcb-cursor xcb-keysyms xcb-xkb xkbcommon
  xkbcommon-x11 cairo cairo-xcb pangocairo pangoft2 fontconfig freetype2 glib-2.0 gobject-2.0)

add_library(vstgui INTERFACE)
target_include_directories(vstgui SYSTEM INTERFACE ${VSTGUI_INCLUDE})
# The package is a debug build: without this its classes have other virtual tables than ours, and opening a window ends in
# a crash.
target_compile_definitions(vstgui INTERFACE DEBUG=1)
target_compile_options(vstgui INTERFACE -Wno-deprecated-declarations -Wno-multichar)
target_link_libraries(vstgui INTERFACE ${VSTGUI_LIBRARY} PkgConfig::VSTGUI_NEEDS)

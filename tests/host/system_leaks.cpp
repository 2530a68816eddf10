// What the system's libraries of fonts and pixels keep to themselves, or lose when a module takes them out of memory with it, is
// none of ours; nor is what the window library has asked the keyboard and the pointer for when memory ends half way.
#if defined(__SANITIZE_ADDRESS__)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libpixman\nleak:xkb_state_new\nleak:xcb_cursor_context_new";
}
#endif
// Fonts are read on a thread of the font library's own; it and what it stands on are built without the thread sanitizer, which
// therefore does not see their locks.
#if defined(__SANITIZE_THREAD__)
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
extern "C" __attribute__((visibility("default"), used)) const char* __tsan_default_suppressions() {
    return "race:libpangoft2\nrace:libfontconfig\nrace:libglib-2.0";
}
#endif

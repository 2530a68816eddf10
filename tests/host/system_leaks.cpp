// What the system's libraries of fonts and pixels keep to themselves, or lose when a module takes them out of memory with it, is
// none of ours.
#if defined(__SANITIZE_ADDRESS__)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\nleak:libpixman";
}
#endif

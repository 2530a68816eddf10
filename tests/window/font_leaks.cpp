// What the system's font library keeps to itself until the process ends is none of ours.
#if defined(__SANITIZE_ADDRESS__)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }
#endif

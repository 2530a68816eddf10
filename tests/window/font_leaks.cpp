// What the system's font library keeps to itself until the process ends is none of ours.
#if defined(__SANITIZE_ADDRESS__)
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }
#endif

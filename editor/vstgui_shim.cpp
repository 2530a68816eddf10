// What the packaged window library expects of a newer C library and compiler than Debian 12 has: three symbols. On a
// system that has them this file defines nothing.
#include <cstdlib>
#include <exception>
#include <iostream>  // with it this file runs the streams' set-up for the whole module

#include <cxxabi.h>

#if !defined(__GLIBC_PREREQ)
#define VANTORIC_OLD_LIBC 1
#elif !__GLIBC_PREREQ(2, 38)
#define VANTORIC_OLD_LIBC 1
#endif

// NOLINTBEGIN(bugprone-reserved-identifier): the names are those that the library asks for.
#ifdef VANTORIC_OLD_LIBC
extern "C" __attribute__((visibility("hidden"))) long __isoc23_strtol(const char* text, char** end, int base) {
    return std::strtol(text, end, base);
}
#endif

#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE < 14
extern "C" __attribute__((visibility("hidden"), noreturn)) void __cxa_call_terminate(void* exception) noexcept {
    if (exception != nullptr) abi::__cxa_begin_catch(exception);
    std::terminate();
}
#endif

#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE < 13
namespace std {
__attribute__((visibility("hidden"))) void ios_base_library_init() {}
}  // namespace std
#endif
// NOLINTEND(bugprone-reserved-identifier)

// Sample and wave tables that the worker rewrites while voices read them: a few samples are heard half old and
// half new, a click at most, and that is the price of an audio thread that never waits.
#pragma once

#if defined(__SANITIZE_THREAD__)
extern "C" {
void AnnotateIgnoreReadsBegin(const char* file, int line);
void AnnotateIgnoreReadsEnd(const char* file, int line);
void AnnotateIgnoreWritesBegin(const char* file, int line);
void AnnotateIgnoreWritesEnd(const char* file, int line);
}
#endif

namespace vantoric {

// As long as it lives, this thread's plain reads and writes are known to meet those of the audio thread, and
// the thread sanitizer is told so. Flags and locks are watched as ever. In other builds it is nothing.
class HeardWhileWritten {
public:
#if defined(__SANITIZE_THREAD__)
    HeardWhileWritten() {
        AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
        AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
    }
    ~HeardWhileWritten() {
        AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
        AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
    }
#else
    HeardWhileWritten() {}
    ~HeardWhileWritten() {}
#endif
    HeardWhileWritten(const HeardWhileWritten&) = delete;
    HeardWhileWritten& operator=(const HeardWhileWritten&) = delete;
};

}  // namespace vantoric

// One of these a target, built by clang with -fsanitize=fuzzer; FUZZ_TARGET names the function.
#include "tests/fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantoric::fuzz::FUZZ_TARGET(data, size);
    return 0;
}

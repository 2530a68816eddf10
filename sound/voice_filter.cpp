#include "sound/voice_filter.h"

#include <algorithm>

namespace vantoric {

void VoiceFilter::run(float* samples, int count) {
    const filters::Loop<1>* loop = slot_.loop();
    if (loop == nullptr) return;
    filters::DrawStarts starts;
    starts.congruence[0] = random_.congruence.state;
    starts.hash[0] = random_.hash.counter;
    starts.hashSeed = random_.hash.seed;
    random_.congruence.skip(static_cast<std::uint32_t>(loop->draws.congruence * count));
    random_.hash.counter += static_cast<std::uint32_t>(loop->draws.hash * count);
    filters::LoopRun<1> run{&memory_, &starts, samples, 1};
    loop->run({&run, 1}, count);
    if (run.broken != 0) {
        reset();
        std::fill_n(samples, count, 0.0f);
    }
}

int filterNumber(int index) {
    const filters::FilterType<1>* type = filters::findFilterType<1>(index);
    return type != nullptr ? type->number : -1;
}

}  // namespace vantoric

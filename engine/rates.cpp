#include "engine/rates.h"

namespace vantoric {

namespace {

void fillKeyIncrements(EngineState& state, float rate) {
    double frequency = 523.2511306007598;  // of key 0, times 128
    for (float& increment : state.keyIncrement) {
        increment = static_cast<float>(frequency) * 0.0078125f / rate;
        frequency *= 1.059463094359;
    }
}

}  // namespace

void setRates(EngineState& state, float hostRate) {
    const Rates rates = ratesOf(hostRate);
    const float rate = rates.internalRate;
    fillKeyIncrements(state, rate);
    state.oversampled = rates.oversampled;
    state.internalRate = rate;
    state.internalRateExact = rate;
    state.reciprocalRate = 1.0f / rate;
    state.rateTo44100 = 44100.0f / rate;
    state.tickSamples = rates.tickSamples;
    const int samples = state.tickSamples > 0 ? state.tickSamples : 1;
    state.reciprocalTickSamples = 1.0f / static_cast<float>(samples);
    state.ticksPerSecond = static_cast<double>(rate) / samples;
}

}  // namespace vantoric

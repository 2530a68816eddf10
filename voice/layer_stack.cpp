#include "voice/layer_stack.h"

#include <array>

#include "voice/layer.h"

namespace vantoric {

namespace {

using Layers = std::span<Layer* const>;

// All oscillators, then all tone stages, then all filters and outputs, then each layer's inserts and sum.
void renderTogether(Layers layers, float* left, float* right, int count) {
    OscillatorRuns oscillators(layers[0]->engine(), layers[0]->waves(), layers[0]->random(), count);
    std::array<BankRun, layerCount> runs;
    std::size_t sounding = 0;
    for (Layer* layer : layers) {
        layer->gatherOscillators(oscillators);
        if (layer->bankRun().mask != 0) runs[sounding++] = layer->bankRun();
    }
    oscillators.run();
    for (const BankRun& run : std::span(runs.data(), sounding)) run.bank->mix(count, run.mask);
    renderBanks({runs.data(), sounding}, count);
    for (Layer* layer : layers) layer->endBlock(left, right, count);
}

}  // namespace

void renderLayers(Layers layers, float* left, float* right, int count) {
    std::array<Layer*, layerCount> running;
    std::size_t used = 0;
    for (Layer* layer : layers)
        if (layer->beginBlock(count)) running[used++] = layer;
    for (Layers rest(running.data(), used); !rest.empty();) {
        DrawStages draws = rest[0]->drawStages();
        std::size_t together = 1;
        while (together < rest.size() && draws.before(rest[together]->drawStages())) draws.add(rest[together++]->drawStages());
        renderTogether(rest.first(together), left, right, count);
        rest = rest.subspan(together);
    }
}

}  // namespace vantoric

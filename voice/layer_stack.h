// The audio of several layers, stage by stage: what waits for itself in one layer (tone stages, recursive filters) runs
// beside the same of the others.
#pragma once

#include <span>

namespace vantoric {

class Layer;

// Adds `count` samples (up to maxTickSamples, never across a tick) of the layers to left and right: the same as
// Layer::renderBlock of one after the other, in less time. The layers' random draws keep that order: layers whose draws
// would not are rendered one after the other. Audio thread.
void renderLayers(std::span<Layer* const> layers, float* left, float* right, int count);

}  // namespace vantoric

#include "editor/model/lfo_display.h"

#include <cmath>

#include "base/numbers.h"
#include "voice/lfo.h"
#include "voice/step_lfo.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr double displayTempo = 60.0;
constexpr float limitPixels = 20.0f;  // up and down from the middle line

void runSteps(const LfoSettings& settings, std::span<float> levels) {
    StepLfo lfo;
    LinearCongruence random{22222};
    lfo.steps = settings.stepValues;
    lfo.noteOn(settings.mode, {.shape = settings.wave, .stepCount = settings.steps, .tempo = displayTempo}, 0, nullptr);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        lfo.position = static_cast<double>(i) * lfo.stepCount / static_cast<double>(levels.size());
        levels[i] = lfo.value(random);
    }
}

void runCycle(const LfoSettings& settings, std::span<float> levels) {
    Lfo lfo;
    const LfoMode mode = lfoMode(settings.mode);
    lfo.trigger({.wave = settings.wave, .startPhase = settings.phase, .tempo = displayTempo}, mode.freeRunning, mode.tempoSynced,
                mode.keyAmount);
    // A cycle takes the whole width, and so does a fade: one-shot waves consist of it, the others show without.
    lfo.rate = 1.0 / static_cast<double>(levels.size());
    if (settings.wave >= 13 && settings.wave <= 17 && settings.fade > 0.01f) {
        lfo.fadeLevel = 0.0;
        lfo.fadeStep = lfo.rate;
    }
    lfo.phase -= lfo.rate;  // the first step is back at the start
    for (float& level : levels) {
        lfo.step();
        level = static_cast<float>(clampUnit(lfo.output));
    }
}

}  // namespace

LfoSettings lfoSettings(const ParameterModel& parameters, int layer, int tab) {
    const auto value = [&](int number) { return parameters.getParameter(hostIndex(number, layer)); };
    const auto list = [&](int number) { return parameters.getListIndex(hostIndex(number, layer)); };
    LfoSettings settings{.tab = tab};
    if (tab == stepLfoTab) {
        settings.wave = list(par::StepShap);
        settings.mode = list(par::StepMode);
        settings.steps = value(par::Steps);
        for (int i = 0; i < 16; ++i) settings.stepValues[static_cast<std::size_t>(i)] = value(par::Step1 + i);
    } else {
        settings.wave = list(par::LfoWave1 + tab);
        settings.mode = list(par::LfoMode1 + tab);
        settings.phase = value(par::LfoPhas1 + tab);
        settings.fade = value(par::LfoFade1 + tab);
    }
    return settings;
}

void runLfo(const LfoSettings& settings, std::span<float> levels) {
    if (settings.tab == stepLfoTab)
        runSteps(settings, levels);
    else
        runCycle(settings, levels);
}

bool LfoDisplay::refresh(const LfoSettings& settings, const DisplayLayout& layout, bool isDirty) {
    if (!isDirty && drawn_ == settings && drawnLayout_ == layout) return false;
    drawn_ = settings;
    drawnLayout_ = layout;
    const auto columns = static_cast<std::size_t>(clampTo(layout.columns, 1, DisplayTraces::maxColumns));
    const std::span trace = std::span(traces_.traceA).first(columns);
    runLfo(settings, trace);
    for (float& level : trace) level = (level - 0.5f) * 2.0f * limitPixels * layout.factor;
    traces_.traceB.fill(0.0f);
    traces_.makeOutline(layout.columns, layout.halfHeight());
    return true;
}

}  // namespace vantoric

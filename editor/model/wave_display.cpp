#include "editor/model/wave_display.h"

#include <algorithm>
#include <cmath>

#include "base/heard_while_written.h"
#include "base/numbers.h"
#include "samples/sample_kernels.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/oscillator_control.h"
#include "sound/wave_store.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr float highestPosition = 0.99f;
constexpr float fullScale = 32768.0f;
constexpr int noiseCycles = 8;  // of the pitched noises over the width

std::size_t columnsOf(const DisplayLayout& layout) {
    return static_cast<std::size_t>(clampTo(layout.columns, 1, DisplayTraces::maxColumns));
}

// The row of the list that tells the wave of a type.
int waveParameter(int synType) {
    switch (synType) {
        case wavetableType: return par::WTWave1;
        case hypersawType: return par::SSWave1;
        case noiseType: return par::NoiWave1;
        default: return par::AnaWave1;
    }
}

}  // namespace

void drawCycle(std::span<const std::int16_t> cycle, float halfHeight, std::span<float> trace) {
    const double perColumn = static_cast<double>(cycle.size()) / static_cast<double>(trace.size());
    for (std::size_t i = 0; i < trace.size(); ++i) {
        const double place = static_cast<double>(i) * perColumn;
        const auto at = static_cast<std::size_t>(place);
        const auto rest = static_cast<float>(place - static_cast<double>(at));
        const float here = cycle[at], next = cycle[(at + 1) % cycle.size()];
        trace[i] = (here + (next - here) * rest) / fullScale * halfHeight;
    }
}

int WaveDisplay::listOf(int layer, int number) const {
    return instrument_.parameters().getListIndex(hostIndex(number + oscillator_, layer));
}

bool WaveDisplay::refresh(int layer, const std::optional<ShownVoice>& voice, const DisplayLayout& layout, bool isDirty) {
    const HeardWhileWritten unguarded;
    const auto number = static_cast<std::size_t>(par::Pw1 + oscillator_);
    const float pw = voice ? voice->mod[number] : instrument_.parameters().getParameter(hostIndex(par::Pw1 + oscillator_, layer));
    const Shown shown = look(layer, clampTo(pw, 0.0f, highestPosition), layout);
    takeMarkers(shown);
    if (!isDirty && shown.synType != noiseType && drawn_ == shown) return false;
    draw(shown);
    drawn_ = shown;
    return true;
}

WaveDisplay::Shown WaveDisplay::look(int layer, float position, const DisplayLayout& layout) {
    Layer& played = instrument_.layer(layer);
    Shown shown{.layer = layer, .synType = listOf(layer, par::SynType1), .layout = layout};
    shown.wave = listOf(layer, waveParameter(shown.synType));
    if (shown.synType == wavetableType || shown.synType == hypersawType) {
        const BankWave* const wave = played.waves().wave(shown.wave, shown.synType == hypersawType);
        const int frames = wave != nullptr ? wave->frames : 1;
        shown.frame = wavePosition(frames, position).frame;
        shown.table = wave != nullptr ? wave->samples + cycleOffset(frames, shown.frame, 0) : nullptr;
        if (wave == nullptr) shown.position = position;
    } else if (shown.synType == noiseType) {
        shown.position = position;
    } else if (shown.synType == customWaveType) {
        shown.generation = played.customWave(oscillator_).generation();
        shown.table = played.customWave(oscillator_).samples();
    } else if (shown.synType == analogType) {
        shown.table = played.waves().rowCycle(std::min(shown.wave, analogRowCount - 1), 0);
    } else if (shown.synType == sampleType) {
        const Sample& sample = played.sample(oscillator_);
        shown.table = sample.levels[0].get();
        shown.length = sample.length;
        shown.loopStart = sample.loopStart;
        shown.loopEnd = sample.loopEnd;
        shown.playStart = instrument_.parameters().getParameter(hostIndex(par::Start1 + oscillator_, layer));
    }
    return shown;
}

void WaveDisplay::takeMarkers(const Shown& shown) {
    lacksSample_ = shown.synType == sampleType && shown.length == 0;
    markers_.showMarkers = shown.synType == sampleType && shown.length > 0;
    if (!markers_.showMarkers || markers_.isDragging() || markers_.markersMoved) return;
    const auto part = [&](std::int32_t place) { return clampUnit(static_cast<float>(place) / static_cast<float>(shown.length)); };
    markers_.loopStart = part(shown.loopStart);
    markers_.loopEnd = part(shown.loopEnd);
    markers_.playStart = shown.playStart;
}

void WaveDisplay::draw(const Shown& shown) {
    const std::size_t columns = columnsOf(shown.layout);
    const std::span trace = std::span(traces_.traceA).first(columns);
    std::fill_n(traces_.traceA.begin(), columns, 0.0f);
    std::fill_n(traces_.traceB.begin(), columns, 0.0f);
    const float halfHeight = shown.layout.halfHeight();
    if (shown.synType == sampleType) {
        drawSample(shown);
    } else if (shown.synType == customWaveType) {
        drawCycle(instrument_.layer(shown.layer).customWave(oscillator_).cycle, halfHeight, trace);
    } else if (shown.table != nullptr) {
        drawCycle({shown.table, cycleSamples}, halfHeight, trace);
    } else if (shown.synType == noiseType || shown.synType == hypersawType) {
        drawKernel(shown, shown.synType == noiseType ? noiseCycles : 1);
    }
    traces_.makeOutline(shown.layout.columns, halfHeight);
}

// A sample may go at any moment, so it is read by who may hold it.
void WaveDisplay::drawSample(const Shown& shown) {
    const std::size_t columns = columnsOf(shown.layout);
    const std::span low = std::span(traces_.traceB).first(columns), high = std::span(traces_.traceA).first(columns);
    if (!instrument_.sampleEditor().readPeaks(shown.layer, oscillator_, low, high)) return;
    for (std::size_t i = 0; i < columns; ++i) {
        low[i] *= shown.layout.halfHeight();
        high[i] *= shown.layout.halfHeight();
    }
}

// Runs the oscillator's own kernel over some cycles. Noise goes on where it was; a stack starts anew, lined up.
void WaveDisplay::drawKernel(const Shown& shown, int cycles) {
    static constexpr int step = 128;
    const bool isOther = !drawn_ || drawn_->synType != shown.synType || drawn_->wave != shown.wave;
    if (isOther || shown.synType == hypersawType) {
        state_ = OscillatorState();
        const OscillatorSetup setup{.synType = shown.synType, .ssWave = shown.wave, .noiWave = shown.wave};
        const WaveStore& waves = instrument_.layer(shown.layer).waves();
        prepareOscillator(state_, setup, waves);
        setupFirstTickPhases(state_, 0.0f, shown.position, shown.wave, shown.synType, 0, random_.congruence);
    }
    const double d = static_cast<double>(cycles) / cycleSamples;
    state_.increment = increment24(d);
    state_.scanIncrement = scanIncrement(d, shown.position);
    setPosition(state_, shown.position);
    const Kernel kernel = chooseKernel({.synType = shown.synType, .ssWave = shown.wave, .noiWave = shown.wave}, sampleKernels);
    const KernelContext context{engine_, instrument_.layer(shown.layer).waves(), random_, nullptr};
    CustomCycle out{};
    const std::array<std::int16_t, step> nothing{};
    for (int at = 0; at < cycleSamples; at += step) runKernel(kernel, context, out.data() + at, step, state_, nothing.data());
    // Kernels leave 6 dB of headroom.
    const std::span trace = std::span(traces_.traceA).first(columnsOf(shown.layout));
    drawCycle(out, 2.0f * shown.layout.halfHeight(), trace);
    for (float& y : trace) y = clampTo(y, -shown.layout.halfHeight(), shown.layout.halfHeight());
}

bool WaveDisplay::writeMarkers(int layer, ParameterEdits& edits) {
    std::int32_t length = 0;
    {
        const HeardWhileWritten unguarded;
        length = instrument_.layer(layer).sample(oscillator_).length;
    }
    const auto points = markers_.takeMoved(length);
    if (!points || !instrument_.sampleEditor().setLoopPoints(layer, oscillator_, points->start, points->end)) return false;
    const int start = hostIndex(par::Start1 + oscillator_, layer);
    if (instrument_.parameters().getParameter(start) != markers_.playStart) edits.change(start, markers_.playStart);
    return true;
}

}  // namespace vantoric

#include "editor/model/envelope_display.h"

#include <algorithm>

#include "base/numbers.h"
#include "voice/envelope.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr int sustainSteps = 500;
constexpr std::size_t longest = 200000;  // ticks, more than four slowest stages last
constexpr float pixelsPerLevel = 0.3333f, floorPixels = -23.0f;

void store(EnvelopeCourse& course, Envelope& envelope) {
    envelope.step();
    course.exactLevels.push_back(clampUnit(envelope.level) * 127.0f);
    course.levels.push_back(static_cast<std::uint8_t>(course.exactLevels.back()));
}

// The height in pixels at a place between two ticks.
template <class Level>
float heightAt(const std::vector<Level>& levels, double place) {
    const auto tick = static_cast<std::size_t>(place);
    const auto rest = static_cast<float>(place - static_cast<double>(tick));
    const float level = levels[tick], next = levels[std::min(tick + 1, levels.size() - 1)];
    return (level + (next - level) * rest) * pixelsPerLevel + floorPixels;
}

}  // namespace

EnvelopeSettings envelopeSettings(const ParameterModel& parameters, int layer, int tab) {
    const auto value = [&](int number) { return parameters.getParameter(hostIndex(number + tab, layer)); };
    return {value(par::AttVol), value(par::HoldVol), value(par::DecVol),
            value(par::SusVol), value(par::RelVol),  value(par::ShapVol)};
}

EnvelopeCourse runEnvelope(const EnvelopeSettings& s) {
    EnvelopeCourse course;
    Envelope envelope;
    envelope.start();
    envelope.setup(s.attack, s.hold, s.decay, s.sustain, s.release, s.shape);
    while (envelope.state != Envelope::Sustain && envelope.state != Envelope::Idle && course.levels.size() < longest)
        store(course, envelope);
    course.firstPart = static_cast<int>(course.levels.size());
    for (int i = 0; i < sustainSteps; ++i) store(course, envelope);
    course.sustainEnd = static_cast<int>(course.levels.size());
    const bool isReleased = (envelope.state == Envelope::Attack && envelope.attackStep > 0.005f) ||
                            envelope.state == Envelope::Decay || envelope.state == Envelope::Sustain;
    if (isReleased) envelope.noteOff();
    while (envelope.state != Envelope::Idle && course.levels.size() < longest) store(course, envelope);
    return course;
}

bool EnvelopeDisplay::refresh(const EnvelopeSettings& settings, const DisplayLayout& layout, bool isDirty) {
    if (!isDirty && drawn_ == settings && drawnLayout_ == layout) return false;
    drawn_ = settings;
    drawnLayout_ = layout;
    const EnvelopeCourse course = runEnvelope(settings);
    const int columns = clampTo(layout.columns, 1, DisplayTraces::maxColumns);
    const double ticksPerColumn = static_cast<double>(course.levels.size()) / columns;
    for (int i = 0; i < columns; ++i) {
        const auto column = static_cast<std::size_t>(i);
        traces_.traceA[column] = heightAt(course.levels, i * ticksPerColumn) * layout.factor;
        exactTrace_[column] = heightAt(course.exactLevels, i * ticksPerColumn) * layout.factor;
        traces_.traceB[column] = floorPixels * layout.factor;
    }
    breaks_ = {static_cast<int>(course.firstPart / ticksPerColumn), static_cast<int>(course.sustainEnd / ticksPerColumn)};
    traces_.makeOutline(columns, layout.halfHeight());
    return true;
}

}  // namespace vantoric

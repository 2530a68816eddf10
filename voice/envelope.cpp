#include "voice/envelope.h"

#include "base/numbers.h"

namespace vantoric {

namespace {

float stepOf(float value) { return static_cast<float>(fastExp(-10.0 * static_cast<double>(value))); }

void update(float& parameter, float& step, float value) {
    if (value == parameter) return;
    parameter = value;
    step = stepOf(value);
}

}  // namespace

Envelope::Envelope()
    : attackStep(stepOf(attack)), holdStep(stepOf(hold)), decayStep(stepOf(decay)), releaseStep(stepOf(release)) {}

void Envelope::start() {
    state = Attack;
    phase = 1.0f;
    level = 0.0f;
    releaseLevel = 0.0f;
    releasePending = 0;
}

void Envelope::silence() {
    state = Idle;
    phase = 1.0f;
    level = 0.0f;
    releaseLevel = 0.0f;
}

void Envelope::setup(float newAttack, float newHold, float newDecay, float newSustain, float newRelease, float newShape) {
    update(attack, attackStep, newAttack);
    update(hold, holdStep, newHold);
    update(decay, decayStep, newDecay);
    update(release, releaseStep, newRelease);
    sustain = newSustain;
    shape = newShape;
}

void Envelope::step() {
    switch (state) {
        case Attack:
            if (phase > 0.0f && attack >= 0.05f) {
                phase -= attackStep;
                // A single fold here against the three of decay and release: the asymmetry is wanted.
                const float v = phase * phase * shape + (1.0f - shape) * phase;
                level = v < 0.0f ? 1.0f : 1.0f - v;
            } else {
                level = 1.0f;
                phase = 1.0f;
                state = hold > 0.005f ? Hold : Decay;
            }
            break;
        case Hold:
            level = 1.0f;
            if (phase > 0.0f) {
                phase -= holdStep;
            } else {
                phase = 1.0f;
                state = releasePending != 0 ? Release : Decay;
            }
            break;
        case Decay:
            if (phase > 0.0f) {
                phase -= decayStep;
                level = shapeCurve(phase, 0.8f * shape) * (1.0f - sustain) + sustain;
            } else {
                phase = 1.0f;
                state = Sustain;
                level = sustain;
            }
            break;
        case Sustain:
            level = sustain;
            if (sustain == 0.0f) state = Idle;
            break;
        case Release:
            if (phase > 0.0005f) {
                phase -= releaseStep;
                level = shapeCurve(phase, 0.8f * shape) * releaseLevel;
            } else {
                state = Idle;
                level = 0.0f;
            }
            break;
        case Fade:
            if (level >= 0.02f) {
                level -= 0.02f;
            } else {
                state = Idle;
                level = 0.0f;
                phase = 0.0f;
            }
            break;
        default:
            level = 0.0f;
            phase = 0.0f;
            break;
    }
}

void Envelope::noteOff() {
    const bool finishesFirst = state == Hold || (state == Attack && hold >= 0.005f);
    if (finishesFirst) {
        if (state == Hold) level = 1.0f;
        releaseLevel = 1.0f;
        releasePending = 1;
    } else if (held()) {
        releaseLevel = level;
        phase = 1.0f;
        state = Release;
    }
}

void Envelope::retrigger() {
    if (state == Attack || state == Fade) return;
    state = Attack;
    phase = 1.0f - level;
}

float Envelope::clampLevel() {
    level = clampUnit(level);
    return level;
}

}  // namespace vantoric

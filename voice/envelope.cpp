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
        case Attack: return stepAttack();
        case Hold: return stepHold();
        case Decay: return stepDecay();
        case Sustain: return stepSustain();
        case Release: return stepRelease();
        case Fade: return stepFade();
        default: level = phase = 0.0f;
    }
}

void Envelope::enter(State next) {
    phase = 1.0f;
    state = next;
}

void Envelope::stepAttack() {
    if (phase > 0.0f && attack >= 0.05f) {
        phase -= attackStep;
        // A single fold here against the three of decay and release: the asymmetry is wanted.
        const float v = phase * phase * shape + (1.0f - shape) * phase;
        level = v < 0.0f ? 1.0f : 1.0f - v;
    } else {
        level = 1.0f;
        enter(hold > 0.005f ? Hold : Decay);
    }
}

void Envelope::stepHold() {
    level = 1.0f;
    if (phase > 0.0f)
        phase -= holdStep;
    else
        enter(releasePending != 0 ? Release : Decay);
}

void Envelope::stepDecay() {
    if (phase > 0.0f) {
        phase -= decayStep;
        level = shapeCurve(phase, 0.8f * shape) * (1.0f - sustain) + sustain;
    } else {
        enter(Sustain);
        level = sustain;
    }
}

void Envelope::stepSustain() {
    level = sustain;
    if (sustain == 0.0f) state = Idle;
}

void Envelope::stepRelease() {
    if (phase > 0.0005f) {
        phase -= releaseStep;
        level = shapeCurve(phase, 0.8f * shape) * releaseLevel;
    } else {
        state = Idle;
        level = 0.0f;
    }
}

void Envelope::stepFade() {
    if (level >= 0.02f) {
        level -= 0.02f;
    } else {
        state = Idle;
        level = phase = 0.0f;
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
        enter(Release);
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

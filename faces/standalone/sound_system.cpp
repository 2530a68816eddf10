#include "faces/standalone/sound_system.h"

#include <utility>

#include "faces/standalone/silent_device.h"
#include "faces/standalone/system.h"

namespace vantoric::standalone {
std::string nameOf(SoundKind kind) {
    for (const auto& [known, name] : soundKinds())
        if (known == kind) return name;
    return {};
}

bool readSoundKind(const std::string& name, SoundKind& kind) {
    for (const auto& [known, text] : soundKinds())
        if (name == text) return kind = known, true;
    return false;
}

bool SoundSystem::open(const SoundChoice& choice) {
    choice_ = choice;
    device_.reset();
    isHeard_ = false;
    problem_.clear();
    if (choice_.kind == SoundKind::none) {
        device_ = std::make_unique<SilentDevice>(player_, choice_.rate, choice_.period);
        return true;
    }
    if (tryOpen()) return true;
    fallSilent();
    return false;
}

bool SoundSystem::tryOpen() {
    problem_.clear();
    std::unique_ptr<SoundDevice> opened = openSound(player_, choice_, problem_);
    isHeard_ = opened != nullptr;
    if (opened) device_ = std::move(opened);
    return isHeard_;
}

void SoundSystem::fallSilent() {
    isHeard_ = false;
    const double rate = player_.frames() > 0 ? player_.rate() : choice_.rate;
    device_ = std::make_unique<SilentDevice>(player_, rate, choice_.period);
    nextTry_ = clockSeconds() + retryEvery;
}

void SoundSystem::poll() {
    if (device_ && device_->isLost()) {
        problem_ = device_->system() + " has gone";
        news_ = problem_ + ": it goes on silently until sound is back.";
        device_.reset();
        fallSilent();
        return;
    }
    if (isHeard_ || choice_.kind == SoundKind::none || clockSeconds() < nextTry_) return;
    device_.reset();  // two would render at once
    if (!tryOpen()) return fallSilent();
    news_ = "Sound is back: " + description();
}

std::string SoundSystem::description() const {
    const std::string timing = std::to_string(static_cast<int>(player_.rate())) + " Hz, " + std::to_string(period()) + " frames";
    if (!isHeard_) return "no sound";
    const bool hasName = system() == "ALSA" || system() == "WASAPI";
    return system() + (hasName ? " \"" + choice_.device + "\"" : "") + ", " + timing;
}

std::string SoundSystem::takeNews() { return std::exchange(news_, {}); }

}  // namespace vantoric::standalone

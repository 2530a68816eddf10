#include "faces/standalone/sound_system.h"

#include <array>
#include <cstdio>
#include <exception>
#include <new>
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

std::string kilohertzText(double hertz) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.5g kHz", hertz / 1000);
    return text.data();
}

bool SoundSystem::open(const SoundChoice& choice) {
    choice_ = choice;
    device_.reset();
    player_.forgetDropouts();
    isHeard_ = false;
    problem_.clear();
    if (choice_.kind == SoundKind::none) return fallSilent(choice_.rate);
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

void SoundSystem::fallSilent() { fallSilent(player_.frames() > 0 ? player_.rate() : choice_.rate); }

bool SoundSystem::fallSilent(double rate) try {
    isHeard_ = false;
    nextTry_ = clockSeconds() + retryEvery;
    device_ = std::make_unique<SilentDevice>(player_, rate, choice_.period);
    return true;
} catch (const std::exception& error) {  // no memory or no thread: time stands still until there is
    const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    if (problem_.empty()) problem_ = isMemory ? "no memory left" : error.what();
    return false;
}

void SoundSystem::poll() {
    if (device_ && device_->isLost()) {
        problem_ = device_->system() + " has gone";
        news_ = problem_ + ": it goes on silently until sound is back.";
        device_.reset();
        fallSilent();
        return;
    }
    const bool isAsWanted = isHeard_ || (choice_.kind == SoundKind::none && device_ != nullptr);
    if (isAsWanted || clockSeconds() < nextTry_) return;
    device_.reset();  // two would render at once
    if (choice_.kind == SoundKind::none || !tryOpen()) return fallSilent();
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

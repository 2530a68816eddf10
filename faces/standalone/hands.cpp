#include "faces/standalone/hands.h"

#include <algorithm>

namespace vantoric::standalone {
namespace {

struct PlayingKey {
    unsigned code;
    int semitone;  // above C of the octave
};
// Codes of the evdev keyboard, as the X server numbers them: Z S X D C ... and Q 2 W 3 E ... of an American board.
constexpr PlayingKey playingKeys[] = {
    {24, 12}, {11, 13}, {25, 14}, {12, 15}, {26, 16}, {27, 17}, {14, 18}, {28, 19}, {15, 20}, {29, 21},
    {16, 22}, {30, 23}, {31, 24}, {18, 25}, {32, 26}, {19, 27}, {33, 28}, {34, 29}, {21, 30}, {35, 31},  // the upper rows
    {52, 0},  {39, 1},  {53, 2},  {40, 3},  {54, 4},  {55, 5},  {42, 6},  {56, 7},  {43, 8},  {57, 9},
    {44, 10}, {58, 11}, {59, 12}, {46, 13}, {60, 14}, {47, 15}, {61, 16},  // the lower rows
};
constexpr std::uint8_t noteOn = 0x90, noteOff = 0x80, controller = 0xb0;

}  // namespace

int Hands::noteOf(unsigned code) const {
    for (const PlayingKey& key : playingKeys)
        if (key.code == code) {
            const int note = 12 * (octave_ + 1) + key.semitone;
            return note < 128 ? note : -1;
        }
    return -1;
}

unsigned Hands::codeOf(int note) const {
    for (const PlayingKey& key : playingKeys)
        if (12 * (octave_ + 1) + key.semitone == note) return key.code;
    return 0;
}

void Hands::hold(int note, int velocity) {
    ++holders_[static_cast<std::size_t>(note)];
    player_.touch({noteOn, static_cast<std::uint8_t>(note), static_cast<std::uint8_t>(std::clamp(velocity, 1, 127))});
}

void Hands::press(int note, int velocity) {
    if (note >= 0 && note < 128) hold(note, velocity);
}

// A note that another key holds too sounds on.
void Hands::release(int note) {
    if (note < 0 || note > 127) return;
    auto& holders = holders_[static_cast<std::size_t>(note)];
    if (holders == 0) return;
    --holders;
    if (holders > 0) return;
    player_.touch({noteOff, static_cast<std::uint8_t>(note), 0});
}

bool Hands::codeDown(unsigned code) {
    const int note = noteOf(code);
    if (note < 0) return false;
    if (noteOfCode_[code] >= 0) return true;  // it repeats
    noteOfCode_[code] = static_cast<std::int16_t>(note);
    hold(note, keyVelocity);
    return true;
}

bool Hands::codeUp(unsigned code) {
    if (code != 0 && code == pedalCode_) return setPedal(false), true;
    if (code >= noteOfCode_.size() || noteOfCode_[code] < 0) return false;
    release(noteOfCode_[code]);
    noteOfCode_[code] = -1;
    return true;
}

void Hands::releaseCodesBut(const std::bitset<256>& down) {
    for (unsigned code = 0; code < noteOfCode_.size(); ++code)
        if (!down[code]) codeUp(code);
}

bool Hands::isAnyCodeDown() const {
    return pedalCode_ != 0 || std::any_of(noteOfCode_.begin(), noteOfCode_.end(), [](std::int16_t note) { return note >= 0; });
}

void Hands::setOctave(int octave) { octave_ = std::clamp(octave, lowestOctave, highestOctave); }
void Hands::shiftOctave(int by) { setOctave(octave_ + by); }

void Hands::pedalCodeDown(unsigned code) {
    setPedal(true);
    pedalCode_ = code;
}

void Hands::setPedal(bool down) {
    pedalCode_ = 0;
    if (down == isPedalDown_) return;
    isPedalDown_ = down;
    player_.touch({controller, 64, static_cast<std::uint8_t>(down ? 127 : 0)});
}

void Hands::panic() {
    holders_.fill(0);
    noteOfCode_.fill(-1);
    isPedalDown_ = false;
    pedalCode_ = 0;
    player_.silence();
}

}  // namespace vantoric::standalone

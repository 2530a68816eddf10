// The keys on the screen and on the computer's keyboard: who holds which note, the octave, the pedal.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "faces/standalone/player.h"

namespace vantoric::standalone {

// On the thread of the window. Notes are sent on channel 1.
class Hands {
public:
    static constexpr int lowestOctave = 0, highestOctave = 7, keyVelocity = 100;

    // The player outlives it.
    explicit Hands(Player& player) : player_(player) { noteOfCode_.fill(-1); }

    // A key of the screen, 0 to 127, by a velocity of 1 to 127, and its release.
    void press(int note, int velocity);
    void release(int note);

    // A key of the computer by its place on the board: the number that the X server gives it, whatever is printed on it. The
    // lower letters are an octave and a half from C of the octave on, the upper ones the next. False if it is none that plays.
    bool codeDown(unsigned code);
    bool codeUp(unsigned code);
    // The note that a key of the computer plays now, -1 for none.
    int noteOf(unsigned code) const;
    // The key of the computer that plays a note now, 0 for none; of two the upper row's.
    unsigned codeOf(int note) const;

    // By so many octaves, within bounds. Keys that are down sound on as they are.
    void shiftOctave(int by);
    void setOctave(int octave);
    int octave() const { return octave_; }
    void setPedal(bool down);
    // The same by a key of the computer, which holds it down.
    void pedalCodeDown(unsigned code);
    bool isPedalDown() const { return isPedalDown_; }

    // Lets go of those of the computer's keys, the pedal's among them, that are not down: their releases went to another window.
    void releaseCodesBut(const std::bitset<256>& down);
    bool isAnyCodeDown() const;
    // Ends all that sounds, on all channels, and lets go of what is held here. Nothing else of the patch or the controllers
    // moves.
    void panic();

private:
    void hold(int note, int velocity);

    Player& player_;
    int octave_ = 3;
    bool isPedalDown_ = false;
    unsigned pedalCode_ = 0;  // that holds the pedal; 0 for none
    std::array<std::int16_t, 256> noteOfCode_{};
    std::array<std::uint8_t, 128> holders_{};
};

}  // namespace vantoric::standalone

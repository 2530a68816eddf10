// From the two bytes of a pitch wheel message to a position and a frequency factor.
#pragma once

namespace vantoric {

// Wheel position from 0 to 1, 0.5 the centre, with dead zones at both ends and around the centre.
// lsb, msb: 0 to 127.
float pitchWheelPosition(int lsb, int msb);

// Frequency factor of a position. range: the stored value of `PitchWhl`, a list value whose rows are
// 0, 1, 2, 3, 4, 7, 12 and 24 semitones; beyond them the wheel does nothing.
float pitchBendFactorOf(float position, float range);

}  // namespace vantoric

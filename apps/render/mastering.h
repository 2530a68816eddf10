// The last step of a recording: its loudness and its highest peak.
#pragma once

#include <vector>

namespace vantoric::render {

// What a stereo recording measures (ITU-R BS.1770-4, EBU R 128).
struct Measures {
    double loudness;  // LUFS, integrated; -inf if it is too short or too quiet
    double truePeak;  // dBTP, of the louder channel; -inf for silence
};

// Interleaved stereo. Rate in Hz.
Measures measure(const std::vector<double>& samples, double rate);

struct Mastered {
    double gain = 0.0;       // decibels, by which all of it was raised
    double reduction = 0.0;  // decibels, by which the limiter lowered the highest peak; 0 if it was not needed
};

// Brings the recording to an integrated loudness (LUFS) by plain gain. Only where its true peak would then pass
// `ceiling` (dBTP), a limiter that looks ahead holds it there. A silent recording stays as it is.
Mastered master(std::vector<double>& samples, double rate, double loudness, double ceiling);

// Lowers what passes the ceiling (of full scale): gain falls evenly within five milliseconds before a peak and comes
// back in a tenth of a second. Returns the lowest gain.
double limit(std::vector<double>& samples, double rate, double ceiling);

}  // namespace vantoric::render

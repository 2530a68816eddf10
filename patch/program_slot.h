// The one program of the instrument: its name. The program's values are the parameters themselves.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "base/messages.h"
#include "base/random.h"

namespace vantoric {

// Any thread but the audio thread, also while another loads a patch.
class ProgramSlot {
public:
    static constexpr int longestName = 27;  // bytes

    explicit ProgramSlot(Messages& messages) : messages_(messages) {}

    // No index has an effect on the sound: the values in force are the program's own.
    void setProgram(int index) { static_cast<void>(index); }
    int getProgram() const { return 0; }

    // Stores a name. One of 28 or more bytes is answered with a message and becomes "ThisNameIsTooLong".
    void setProgramName(const std::string& text);
    // The name, or "Noname" if it is empty: 1 to 27 bytes.
    std::string getProgramName() const;
    // The name of program `index` of any category; false, with `text` as it was, for an index other than 0.
    bool getProgramNameIndexed(int category, int index, std::string& text) const;

private:
    Messages& messages_;
    mutable std::mutex naming_;
    std::string name_ = "000";
};

// The name of a new patch of a kind: "Init" or a template's name, and a number of at most two digits. Steps `seed`.
std::string nextPatchName(const std::string& kind, LinearCongruence& seed);
// The name of a patch after "Reset all"; the second form uses the seed of the process, so that the name changes each time.
// Editor thread.
std::string nextInitName(LinearCongruence& seed);
std::string nextInitName();
// The seed of the process. Editor thread.
LinearCongruence& patchNameSeed();

}  // namespace vantoric

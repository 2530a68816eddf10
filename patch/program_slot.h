// The one program of the instrument: its name. The program's values are the parameters themselves.
#pragma once

#include <cstdint>
#include <string>

#include "base/random.h"
#include "platform/dialogs.h"

namespace vantoric {

// Not shared between threads: host and editor call from one thread at a time.
class ProgramSlot {
public:
    static constexpr int longestName = 27;  // characters

    explicit ProgramSlot(platform::Dialogs& dialogs) : dialogs_(dialogs) {}

    // No index has an effect on the sound: the values in force are the program's own.
    void setProgram(int index) { static_cast<void>(index); }
    int getProgram() const { return 0; }

    // Stores a name. One of 28 or more characters is answered with a box and becomes "ThisNameIsTooLong".
    void setProgramName(const std::string& text);
    // The name, or "Noname" if it is empty: 1 to 27 characters.
    std::string getProgramName() const { return name_.empty() ? "Noname" : name_; }
    // The name of program `index` of any category; false, with `text` as it was, for an index other than 0.
    bool getProgramNameIndexed(int category, int index, std::string& text) const;

private:
    platform::Dialogs& dialogs_;
    std::string name_ = "000";
};

// The name of a patch after "Reset all": "Init" and a number of at most two digits. Steps `seed`; the
// second form uses the seed of the process, so that the name changes each time. Editor thread.
std::string nextInitName(LinearCongruence& seed);
std::string nextInitName();

}  // namespace vantoric

#include "patch/program_slot.h"

namespace vantoric {

void ProgramSlot::setProgramName(const std::string& text) {
    if (text.size() <= longestName) {
        name_ = text;
        return;
    }
    dialogs_.message("Warning",
                     "The name of the preset is longer than 27 characters. This hurts the VST/AU interface specification and can "
                     "crash your host software. Please use a shorter name!");
    name_ = "ThisNameIsTooLong";
}

bool ProgramSlot::getProgramNameIndexed(int, int index, std::string& text) const {
    if (index != 0) return false;
    text = getProgramName();
    return true;
}

std::string nextInitName(LinearCongruence& seed) {
    const int number = static_cast<int>(static_cast<float>(seed.next()) * 0.000000023067f);
    return "Init " + std::to_string(number);
}

std::string nextInitName() {
    static LinearCongruence seed;
    return nextInitName(seed);
}

}  // namespace vantoric

#include "patch/program_slot.h"

#include "base/thread_check.h"

namespace vantoric {

void ProgramSlot::setProgramName(const std::string& text) {
    notInsideAnyBlock();
    const bool isTooLong = text.size() > longestName;
    if (isTooLong)
        messages_.post("Warning",
                       "The name of the preset is longer than 27 characters. This hurts the VST/AU interface specification and "
                       "can crash your host software. Please use a shorter name!");
    const std::lock_guard guard(naming_);
    name_ = isTooLong ? "ThisNameIsTooLong" : text;
}

std::string ProgramSlot::getProgramName() const {
    const std::lock_guard guard(naming_);
    return name_.empty() ? "Noname" : name_;
}

bool ProgramSlot::getProgramNameIndexed(int, int index, std::string& text) const {
    if (index != 0) return false;
    text = getProgramName();
    return true;
}

std::string nextPatchName(const std::string& kind, LinearCongruence& seed) {
    const int number = static_cast<int>(static_cast<float>(seed.next()) * 0.000000023067f);
    return kind + " " + std::to_string(number);
}

std::string nextInitName(LinearCongruence& seed) { return nextPatchName("Init", seed); }
std::string nextInitName() { return nextInitName(patchNameSeed()); }

LinearCongruence& patchNameSeed() {
    static LinearCongruence seed;
    return seed;
}

}  // namespace vantoric

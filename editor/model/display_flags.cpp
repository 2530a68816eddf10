#include "editor/model/display_flags.h"

#include "base/parameters.h"

namespace vantoric {

namespace {

namespace p = parameter;

// The first of as many members as there are displays of the kind, each of which feeds one.
constexpr int waveFamilies[] = {p::SynType1, p::WTWave1,  p::SSWave1,  p::NoiWave1, p::AnaWave1,
                                p::Pw1,      p::LoopSta1, p::LoopEnd1, p::LoopMod1, p::Start1};
constexpr int filterFamilies[] = {p::Cutoff1, p::Reso1, p::FilKey1, p::FilEnv1, p::FilType1};

template <std::size_t Families, std::size_t Displays>
void noteFamilies(const int (&families)[Families], std::array<bool, Displays>& flags, int number) {
    for (const int first : families)
        if (const int member = number - first; member >= 0 && member < static_cast<int>(Displays))
            flags[static_cast<std::size_t>(member)] = true;
}

bool isWithin(int number, int first, int last) { return number >= first && number <= last; }

}  // namespace

void DisplayFlags::noteParameter(int number) {
    noteFamilies(waveFamilies, wave, number);
    noteFamilies(filterFamilies, filter, number);
    if (number == p::FilAnalo) filter.fill(true);
    if (isWithin(number, p::AttVol, p::ShapAux2)) envelope = true;
    if (isWithin(number, p::LfoSpd1, p::Step1 + 15)) lfo = true;
}

void DisplayFlags::noteAll() {
    wave.fill(true);
    filter.fill(true);
    envelope = lfo = true;
}

}  // namespace vantoric

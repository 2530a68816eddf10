// One filter place of a layer: the filters of its sixteen voices side by side.
#pragma once

#include <array>
#include <bit>

#include "base/engine_state.h"
#include "base/lane_bank.h"
#include "base/random.h"
#include "sound/filter_settings.h"
#include "sound/filters/filter_slot.h"

namespace vantoric {

// Audio thread only, but for touchMemory. Nothing here allocates after construction.
class FilterBank {
public:
    // `random` must outlive the bank. Throws std::bad_alloc if memory is short.
    explicit FilterBank(RandomSources& random) : random_(random) {}

    // Takes the settings of one voice (0 to 15) for the samples up to its next setup. A new type clears the
    // voice's memories; unchanged settings cost nothing.
    void setup(int voice, const FilterSettings& settings) { slots_[voice].setup(memory_, voice, settings); }
    // Makes the memory ready that a type (list index) will run through, so that the audio thread need not. Any thread.
    void touchMemory(int type);
    // Clears what a voice's filter remembers between notes; its coefficients stay.
    void reset(int voice) { slots_[voice].reset(memory_, voice); }
    // Clears a voice's filter altogether and sets it to pass audio through.
    void clear(int voice) { slots_[voice] = {}; }
    // Filters `count` samples (up to maxTickSamples) of the voices in `mask`, in place; sample i of voice v
    // stands at i * 16 + v. Voices outside the mask keep their memories; their samples in the groups that the
    // mask touches are left with some finite value. A voice whose memory is no longer finite is cleared and
    // silent for this run.
    void run(float* buffer, int count, LaneMask mask);

private:
    friend class FilterRack;

    void run(const filters::DrawStarts& starts, float* buffer, int count, LaneMask mask);
    // The loop of all voices in `mask`; null where they differ or pass audio through.
    const filters::Loop<voiceCount>* commonLoop(LaneMask mask) const;
    LaneMask sharing(const filters::Loop<voiceCount>* loop, LaneMask mask) const;
    void silence(float* buffer, int count, LaneMask broken);
    filters::DrawStarts takeDraws(int count, LaneMask mask);
    LaneMask runGroup(const filters::Loop<voiceCount>& loop, const filters::DrawStarts& starts, float* buffer, int count,
                      LaneMask group, LaneMask mask);

    RandomSources& random_;
    filters::FilterMemory<voiceCount> memory_;
    std::array<filters::FilterSlot<voiceCount>, voiceCount> slots_;
    alignas(64) LaneBuffer scratch_ = {};
};

}  // namespace vantoric

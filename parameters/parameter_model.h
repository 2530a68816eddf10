// The patch's 1224 values as host, window, controllers and layers see them.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "base/parameters.h"
#include "parameters/parameter_changes.h"
#include "parameters/parameter_table.h"

namespace vantoric {

// Longest text for the host, without its end.
inline constexpr int hostTextLength = 8;

// One array of floats is the parameters, the current program record's copy of them and the layers' blocks
// in one: all three were always written together. Each value stands alone; reads and writes are relaxed
// and may come from any thread at any time, without a lock, an allocation or a system call. Setting a
// value triggers nothing: readers take it up at the next control tick.
class ParameterModel {
public:
    // All values 0.
    ParameterModel();

    ParameterModel(const ParameterModel&) = delete;
    ParameterModel& operator=(const ParameterModel&) = delete;

    // The value, 0 to 1; 0 for an index outside 0 to 1223.
    float getParameter(int index) const;

    // The list index, 0 to 127, of a list parameter.
    int getListIndex(int index) const;

    // Stores a value clamped to 0 to 1; one above the limit of a guarded list becomes 0. Then notes the change for
    // those who follow `changes`. An index outside 0 to 1223 is ignored.
    void setParameter(int index, float value, ChangeSource source = ChangeSource::host);

    // The same without a note: for all bulk work, which ends with one `changes().noteAll`.
    void setParameterQuiet(int index, float value);

    // Stores a value as it is, past clamp and limit. For state that was valid before, such as undo.
    void writeRaw(int index, float value);

    // Sets every value, quietly, to its control's default.
    void setDefaults();

    // Grows with every value or modulation written, after it: what was read since it last grew is as it was.
    std::uint32_t writes() const { return writes_.load(std::memory_order_acquire); }

    // Adds `amount` to what the engine plays of a parameter, and to nothing else: the value stands, and so do its texts and
    // the patch. An index outside 0 to 1223 and an amount without a number are ignored. Any thread.
    void setModulation(int index, float amount);
    // Of all parameters.
    void clearModulation();
    // The value with its modulation, 0 to 1; 0 for an index outside 0 to 1223.
    float played(int index) const;

    // Copies numbers 24 to 323 of layer 0 to 3 into `block` (324 floats, indexed by number), with their modulation; the first
    // 24, which a layer does not use, become 0. Each value is read once. For the layer's tick.
    void snapshotLayer(int layer, float* block) const;

    // Texts for the host, cut to 8 characters and ended: `text` holds 9 bytes or more. Not for the audio
    // thread (they may allocate). An index outside 0 to 1223 gives an empty text. Layers share names.
    void getParameterName(int index, char* text) const;
    void getParameterDisplay(int index, char* text) const;
    void getParameterLabel(int index, char* text) const;

    // The uncut text of the present value; empty where the host is shown none.
    std::string displayText(int index) const;

    // Largest value that an index keeps: below 1 only for guarded lists. 1 outside 0 to 1223.
    static float parameterLimit(int index);

    // Whether an index is offered for automation; false outside 0 to 1223.
    static bool isAutomatable(int index);

    // 0 for a global number, 1 to 4 for a layer's, -1 from 1224 on.
    static int parameterLayer(int index);

    // What has changed, for readers on any thread.
    ParameterChanges& changes() { return changes_; }
    const ParameterChanges& changes() const { return changes_; }

    // Whether values have texts. True from the start, with or without a window; false empties
    // `getParameterDisplay`, as for a host that is to see no texts.
    void setControlsPresent(bool present) { controlsPresent_.store(present, std::memory_order_relaxed); }

private:
    int lfoModeOf(int index) const;

    std::array<std::atomic<float>, parameterCount> values_;
    std::atomic<std::uint32_t> writes_{0};
    std::array<std::atomic<float>, parameterCount> modulation_;
    std::atomic<bool> isModulated_{false};
    ParameterChanges changes_;
    std::atomic<bool> controlsPresent_{true};
};

}  // namespace vantoric

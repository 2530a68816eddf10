// What the engine tells the editor's window, which implements this; an engine without one has none.
#pragma once

#include <string>

namespace vantoric {

// Calls come from whatever thread made the change, the audio thread included: an implementation notes it
// down without waiting or allocating and shows it at its next idle call. `patchLoaded` and
// `busyChanged` never come from the audio thread.
class EditorLink {
public:
    virtual ~EditorLink() = default;

    // Parameter `index` (0 to 1223) now has `value` (0 to 1, as stored).
    virtual void parameterChanged(int index, float value) = 0;

    // Many parameters may have changed: show all anew.
    virtual void refreshAll() = 0;

    // A patch of that name stands in the program slot.
    virtual void patchLoaded(const std::string& name) = 0;

    // A file is being loaded: the window shows that it is busy, or no longer.
    virtual void busyChanged(bool busy) { static_cast<void>(busy); }

    // A program change of that number, 0 to 127, asks for a patch.
    virtual void programPending(int number) = 0;
};

}  // namespace vantoric

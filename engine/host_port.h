// What an instrument asks of the host that it is plugged into. A face of a format implements it; an instrument
// without a face has none and asks nobody.
#pragma once

namespace vantoric {

// Called from the window's or the library's thread, never from the audio thread and never while the engine is held.
class HostPort {
public:
    // A gesture on parameter `index` (0 to 1223) begins, moves it to `value` (0 to 1, already stored), and ends.
    virtual void editBegun(int index) = 0;
    virtual void parameterEdited(int index, float value) = 0;
    virtual void editEnded(int index) = 0;
    // Another patch is in force: the host is to read names and values anew.
    virtual void patchChanged() = 0;
    // The sound comes `frames` host frames late from now on. No part of the instrument delays it today, so none tells.
    virtual void latencyChanged(int frames) = 0;
    // Asks for another size of the window, in pixels; false if the host refused or cannot.
    virtual bool sizeWanted(int width, int height) = 0;

protected:
    ~HostPort() = default;
};

}  // namespace vantoric

// The wave banks, shared by all instances of the process.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "base/flag.h"
#include "base/messages.h"
#include "sound/wave_store.h"

namespace vantoric {

// Filled once by the worker of whichever instance comes first, emptied with the last instance. Constructors
// and destructors of instances may run on any threads.
class WaveLibrary {
public:
    // The one library of the process.
    static WaveLibrary& shared();

    // Counts an instance in (returns its number, from 1) and out; the last one out empties the store. No
    // worker or voice of the last instance may be running any more.
    int addInstance();
    void removeInstance();

    // Loads all banks from `folder` (with its trailing separator) unless another instance has done so or is
    // at it; in that case waits until it has finished. Missing and bad files are left out in silence, short
    // memory is told. Gives up, returning false, when `stop` is set. Worker threads only.
    bool load(const std::string& folder, Messages& messages, const Flag& stop);

    const WaveStore& store() const { return store_; }
    bool loaded() const { return stage_.load(std::memory_order_acquire) == Stage::loaded; }

private:
    enum class Stage { empty, loading, loaded };

    bool loadAll(const std::string& folder, Messages& messages, const Flag& stop);

    WaveStore store_;
    std::mutex counting_;  // no instance comes while the last one clears up
    int instances_ = 0;
    std::atomic<Stage> stage_{Stage::empty};
};

}  // namespace vantoric

// The wave banks, shared by all instances of the process.
#pragma once

#include <array>
#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>

#include "base/flag.h"
#include "base/messages.h"
#include "platform/mapped_file.h"
#include "sound/custom_wave.h"
#include "sound/wave_store.h"

namespace vantoric {

// Part of a bank that somebody is going to read.
struct BankPart {
    static constexpr int none = -1, allFrames = -1;

    int index = none;  // in its list, as in WaveStore
    bool isSsList = false;
    int frame = allFrames;  // at all levels; one beyond the last is the last
};

// Filled once by the worker of whichever instance comes first, emptied with the last instance. The banks are mapped
// files: opening them reads no samples, and what nobody plays takes no memory. Constructors and destructors of
// instances may run on any threads.
class WaveLibrary {
public:
    // The one library of the process.
    static WaveLibrary& shared();

    // An instance's share: the banks stay as long as there is one. No worker or voice of the instance may be running
    // any more when it goes.
    class Membership {
    public:
        explicit Membership(WaveLibrary& library) : library_(library), number_(library.addInstance()) {}
        ~Membership() { library_.removeInstance(); }
        Membership(const Membership&) = delete;
        Membership& operator=(const Membership&) = delete;

        // How many there were with this one when it came, from 1.
        int number() const { return number_; }

    private:
        WaveLibrary& library_;
        int number_;
    };

    // Loads all banks from `folder` (with its trailing separator) unless another instance has done so or is
    // at it; in that case waits until it has finished. Missing and bad files are left out in silence, short
    // memory is told. Gives up, returning false, when `stop` is set. Worker threads only.
    bool load(const std::string& folder, Messages& messages, const Flag& stop);

    // Fetches parts of the banks into memory, so that no voice waits for them. Entries that
    // hold no bank are passed over. Waits for the disk if need be; not for the audio thread.
    void touch(std::span<const BankPart> parts);
    // Asks the system to read all banks from the disk when it finds the time; they take none of this process's memory by
    // that. Worker threads only.
    void prefetch();

    const WaveStore& store() const { return store_; }
    bool loaded() const { return isLoaded_.load(std::memory_order_acquire); }

    // What the custom waves of all instances share.
    CustomWaveCache& customWaves() { return customWaves_; }

private:
    int addInstance();
    void removeInstance();
    WaveLoad loadBanks(const std::string& folder, const Flag& stop);
    WaveLoad mapBank(int index, const std::filesystem::path& path, bool isSsList);

    using Files = std::array<std::array<std::shared_ptr<platform::MappedFile>, WaveStore::listSize>, 2>;  // [isSsList]

    WaveStore store_;
    CustomWaveCache customWaves_;
    std::mutex counting_;  // no instance comes while the last one clears up
    int instances_ = 0;
    std::mutex loading_;
    std::atomic<bool> isLoaded_{false};
    std::mutex touching_;  // guards files_
    Files files_;
};

}  // namespace vantoric

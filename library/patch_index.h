// Finds patches by typing: a catalogue of the library that a thread of its own keeps up to date.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/messages.h"
#include "library/patch_catalogue.h"
#include "library/patch_state.h"

namespace vantoric {

// What a user writes about a patch. It stands in <Category>.tags beside the category's folder, a section a patch:
//
//     [Glass Harbour]
//     tags = bright, bell
//     author = Somebody
//     about = One line or more.
//
// A tag holds no comma. In a library that can't be written the file is in tags/ of the user's state folder, and what it says
// of a patch holds. Patch files themselves are never changed.
struct PatchNotes {
    std::vector<std::string> tags;
    std::string author, about;
};

// On the thread of the window; nothing here waits for the disk but the end of the object, for what is still to be written.
// The thread has a low priority. Folders and files may be missing, unreadable, vanishing or of any name.
class PatchIndex {
public:
    static constexpr std::size_t mostRecent = 100;

    // Scans the sounds folder at once. Failures to write are told to the messages, which outlive it.
    explicit PatchIndex(Messages& messages);
    ~PatchIndex();
    PatchIndex(const PatchIndex&) = delete;
    PatchIndex& operator=(const PatchIndex&) = delete;

    // Patches, stars or notes may have changed: scans anew. A scan that runs gives up and begins again.
    void rescan();
    // Whether a scan is due or runs.
    bool isScanning() const { return due_.load(std::memory_order_acquire); }
    // Counts the catalogues: a follower looks again when it changes.
    unsigned generation() const { return generation_.load(std::memory_order_acquire); }
    // The present one: empty before the first scan has ended. Stays as it is for whoever holds it.
    std::shared_ptr<const PatchCatalogue> catalogue() const;

    // See PatchCatalogue; of the present one.
    std::vector<std::uint32_t> search(std::string_view query, const PatchFilter& filter) const;
    std::string complete(std::string_view query, const PatchFilter& filter = {}) const;

    // Replaces what is written about a patch, and scans anew.
    void write(const PatchPlace& patch, const PatchNotes& notes);

    // A patch was chosen: it is the first of the recent ones, which all instances and later runs share.
    void notePlayed(const PatchPlace& patch);
    // The newest first.
    std::vector<PatchPlace> recent() const;

private:
    struct Writing {
        PatchPlace patch;
        PatchNotes notes;
    };

    std::vector<std::uint32_t> recentIn(const PatchCatalogue& catalogue) const;
    void run();
    void tellShortMemory();
    void scan();
    void writeNotes(const Writing& writing);
    void keepRecent(std::vector<PatchPlace> played);
    bool isStopped() const { return stops_.load(std::memory_order_relaxed) || again_.load(std::memory_order_relaxed); }
    bool scanCategory(const std::string& category, std::vector<CataloguedPatch>& patches) const;

    Messages& messages_;
    mutable std::mutex mutex_;  // guards what follows up to the thread
    std::condition_variable work_;
    std::shared_ptr<const PatchCatalogue> catalogue_ = std::make_shared<PatchCatalogue>();
    std::vector<Writing> writings_;
    std::vector<PatchPlace> played_, recent_;  // since the thread last kept them; all
    std::thread thread_;
    std::atomic<unsigned> generation_{0};
    std::atomic<bool> due_{true}, again_{false}, stops_{false};
};

}  // namespace vantoric

#include "parameters/parameter_changes.h"

namespace vantoric {

void ParameterChanges::note(int index, ChangeSource source) {
    if (index < 0 || index >= parameterCount) return;
    stamps_[static_cast<std::size_t>(index)].store(stampOf(source), std::memory_order_release);
    count_.fetch_add(1, std::memory_order_release);
}

void ParameterChanges::noteAll(ChangeSource source) {
    all_.store(stampOf(source), std::memory_order_release);
    count_.fetch_add(1, std::memory_order_release);
}

ParameterChanges::Reader::Reader(const ParameterChanges& changes)
    : changes_(changes), seenCount_(changes.count()), seenAll_(changes.all_.load(std::memory_order_acquire)) {
    for (std::size_t i = 0; i < seen_.size(); ++i) seen_[i] = changes.stamps_[i].load(std::memory_order_acquire);
}

// The stamps themselves are compared, not an order of numbers: a change whose stamp is stored while the reader looks
// raises the count afterwards and is met at the next look.
ParameterChanges::News ParameterChanges::Reader::take() {
    News news;
    const std::uint32_t count = changes_.count();
    if (count == seenCount_) return news;
    seenCount_ = count;
    const std::uint32_t all = changes_.all_.load(std::memory_order_acquire);
    if (all != seenAll_) {
        news.all = true;
        news.sources.set(sourceOf(all));
        seenAll_ = all;
    }
    for (std::size_t i = 0; i < seen_.size(); ++i) {
        const std::uint32_t stamp = changes_.stamps_[i].load(std::memory_order_acquire);
        if (stamp == seen_[i]) continue;
        seen_[i] = stamp;
        news.changed.set(i);
        news.sources.set(sourceOf(stamp));
    }
    return news;
}

}  // namespace vantoric

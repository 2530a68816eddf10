// JSON that knows which keys of its objects were asked for, so that a case with a field that no binding reads fails.
#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

namespace golden {

// The map of an object. One that is watched notes the keys that are looked up; one that is walked through counts as read
// whole. Copies of a watched object note look-ups with it, and nothing else: taking one apart is no reading.
template <class Key, class Value, class Compare, class Allocator>
class WatchedMap : public std::map<Key, Value, Compare, Allocator> {
    using Map = std::map<Key, Value, Compare, Allocator>;

public:
    using Map::Map;
    using typename Map::const_iterator;
    using typename Map::iterator;
    WatchedMap() = default;
    WatchedMap(const WatchedMap& other) : Map(other), read_(other.read_) {}
    WatchedMap(WatchedMap&& other) noexcept
        : Map(std::move(other)), read_(std::move(other.read_)), isOriginal_(std::exchange(other.isOriginal_, false)) {}
    WatchedMap& operator=(const WatchedMap& other) {
        Map::operator=(other);
        read_ = other.read_;
        isOriginal_ = false;
        return *this;
    }
    WatchedMap& operator=(WatchedMap&& other) noexcept {
        Map::operator=(std::move(other));
        read_ = std::move(other.read_);
        isOriginal_ = std::exchange(other.isOriginal_, false);
        return *this;
    }

    void watch() {
        read_ = std::make_shared<std::set<std::string>>();
        isOriginal_ = true;
    }
    bool wasRead(const std::string& key) const { return read_ == nullptr || read_->count(key) != 0; }

    template <class K>
    iterator find(const K& key) {
        note(key);
        return Map::find(key);
    }
    template <class K>
    const_iterator find(const K& key) const {
        note(key);
        return Map::find(key);
    }
    template <class K, class... Rest>
    std::pair<iterator, bool> emplace(K&& key, Rest&&... rest) {
        note(key);
        return Map::emplace(std::forward<K>(key), std::forward<Rest>(rest)...);
    }
    iterator begin() {
        noteAll();
        return Map::begin();
    }
    const_iterator begin() const {
        noteAll();
        return Map::begin();
    }

private:
    template <class K>
    void note(const K& key) const {
        if (read_ != nullptr) read_->insert(std::string(key));
    }
    void noteAll() const {
        if (!isOriginal_) return;
        for (auto at = Map::begin(); at != Map::end(); ++at) read_->insert(at->first);
    }

    std::shared_ptr<std::set<std::string>> read_;
    bool isOriginal_ = false;
};

using json = nlohmann::basic_json<WatchedMap>;

// Watches all objects within `value` from now on.
void watch(json& value);

// The ways ("operations[3].wheel") to the keys within `value` that were not asked for since it is watched.
std::vector<std::string> unreadKeys(const json& value);

}  // namespace golden

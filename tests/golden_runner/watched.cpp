#include "golden_runner/watched.h"

namespace golden {

namespace {

using Objects = json::object_t;

void collect(const json& value, const std::string& way, std::vector<std::string>& unread) {
    if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) collect(value[i], way + "[" + std::to_string(i) + "]", unread);
    } else if (value.is_object()) {
        const Objects& object = *value.get_ptr<const Objects*>();
        for (auto at = object.cbegin(); at != object.cend(); ++at) {  // which reads nothing
            const std::string there = way.empty() ? at->first : way + "." + at->first;
            if (object.wasRead(at->first))
                collect(at->second, there, unread);
            else
                unread.push_back(there);
        }
    }
}

}  // namespace

void watch(json& value) {
    if (value.is_array()) {
        for (json& element : value) watch(element);
    } else if (value.is_object()) {
        Objects& object = *value.get_ptr<Objects*>();
        for (auto& [key, inner] : object) watch(inner);
        object.watch();
    }
}

std::vector<std::string> unreadKeys(const json& value) {
    std::vector<std::string> unread;
    collect(value, "", unread);
    return unread;
}

}  // namespace golden

#include "library/rank_file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <unordered_map>

#include "base/numbers.h"
#include "library/name_order.h"
#include "platform/files.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

constexpr std::size_t largestFile = 64 << 20;  // far above what the names of any folder fill

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutLeadingBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

// Takes lines and numbers off a text, by the rules of scanf.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    std::optional<std::string_view> line() {
        rest_ = withoutLeadingBlanks(rest_);
        if (rest_.empty()) return {};
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        return line;
    }

    // Held to 0 to 100.
    std::optional<int> number() {
        rest_ = withoutLeadingBlanks(rest_);
        std::size_t at = !rest_.empty() && (rest_[0] == '-' || rest_[0] == '+') ? 1 : 0;
        const bool isNegative = at == 1 && rest_[0] == '-';
        if (at >= rest_.size() || !isDigit(rest_[at])) return {};
        int value = 0;
        for (; at < rest_.size() && isDigit(rest_[at]); ++at) value = std::min(100, value * 10 + (rest_[at] - '0'));
        rest_.remove_prefix(at);
        return isNegative ? 0 : value;
    }

private:
    std::string_view rest_;
};

}  // namespace

std::string rankFilePath(const std::string& category) { return platform::ownPath(platform::belowSounds() + category + ".rnk"); }

Ratings readRatings(std::string_view text, const std::vector<std::string>& patchNames) {
    std::unordered_map<std::string_view, std::uint8_t> stars;
    Scanner scanner(text);
    while (const auto name = scanner.line()) {
        const auto number = scanner.number();
        if (!number) break;
        stars[*name] = static_cast<std::uint8_t>(clampTo(*number, fewestStars, mostStars));
    }
    Ratings ratings;
    for (const std::string& name : patchNames) {
        const auto found = stars.find(withoutLeadingBlanks(name));
        ratings.push_back(found != stars.end() ? found->second : std::uint8_t{starsByDefault});
    }
    return ratings;
}

std::string writeRatings(const std::vector<std::string>& patchNames, const Ratings& ratings) {
    std::string text;
    for (std::size_t i = 0; i < patchNames.size() && i < ratings.size(); ++i)
        if (patchNames[i].find('\n') == std::string::npos) text += patchNames[i] + "\n" + std::to_string(ratings[i]) + "\n";
    return text;
}

namespace {

// None: a file is there, but what it says is not known.
std::optional<Ratings> tryLoadRanks(const std::string& category, const std::vector<std::string>& patchNames) {
    std::vector<std::uint8_t> bytes;
    const platform::FileRead read =
        platform::tryReadFile(platform::dataPath(platform::belowSounds() + category + ".rnk"), bytes, largestFile);
    if (read != platform::FileRead::done && read != platform::FileRead::missing) return {};
    return readRatings({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, patchNames);
}

}  // namespace

Ratings loadRanks(const std::string& category, const std::vector<std::string>& patchNames) {
    return tryLoadRanks(category, patchNames).value_or(Ratings(patchNames.size(), starsByDefault));
}

void saveRanks(const std::string& category, const std::vector<std::string>& patchNames, const Ratings& ratings) {
    const std::string text = writeRatings(patchNames, ratings);
    if (!text.empty() && text.size() <= largestFile) platform::writeFile(rankFilePath(category), text.data(), text.size());
}

bool ratePatch(const std::string& category, const std::string& patchName, int stars) {
    const std::vector<std::string> names =
        listNames(platform::listDataFolder(platform::belowSounds() + category), ".fxp", std::numeric_limits<std::size_t>::max());
    const auto found = std::find(names.begin(), names.end(), patchName);
    if (found == names.end()) return false;
    std::optional<Ratings> ratings = tryLoadRanks(category, names);
    if (!ratings) return false;
    (*ratings)[static_cast<std::size_t>(found - names.begin())] =
        static_cast<std::uint8_t>(clampTo(stars, fewestStars, mostStars));
    saveRanks(category, names, *ratings);
    return true;
}

}  // namespace vantoric

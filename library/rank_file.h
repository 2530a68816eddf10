// The stars that a user gave to the patches of a category: a text file beside the category's folder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantoric {

inline constexpr int fewestStars = 1, mostStars = 5, starsByDefault = 3;

// One for each patch of a list, 1 to 5 stars.
using Ratings = std::vector<std::uint8_t>;

// The path to which a category's file is written; it may have come with the installation, from elsewhere.
std::string rankFilePath(const std::string& category);

// The ratings of these patches as a text tells them: lines of a name and a number in turn. Blank lines and leading blanks
// are skipped; a pair without a number ends the reading; of a name that comes twice the last number holds, held to 1 to 5;
// names that are not listed are dropped and patches without a line get 3 stars. Any bytes.
Ratings readRatings(std::string_view text, const std::vector<std::string>& patchNames);

// The text for these patches. A name with a line break, which the file cannot hold, is left out.
std::string writeRatings(const std::vector<std::string>& patchNames, const Ratings& ratings);

// The same from and to a category's file. One that is missing, unreadable or larger than 64 MiB tells nothing; a failed
// write is ignored, and so is one without patches or of more than that size. Any thread but the audio thread.
Ratings loadRanks(const std::string& category, const std::vector<std::string>& patchNames);
void saveRanks(const std::string& category, const std::vector<std::string>& patchNames, const Ratings& ratings);

// Gives one patch of a category its stars, held to 1 to 5, and leaves those of all others in the folder as they are, also of
// those that no list shows. False, with nothing written, if there is no such patch, or if there is a file that cannot be
// read: its ratings are not known.
bool ratePatch(const std::string& category, const std::string& patchName, int stars);

}  // namespace vantoric

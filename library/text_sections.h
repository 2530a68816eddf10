// Small text files that people can read and mend: fields of named sections, a line each.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantoric {

// A section begins with its name in square brackets, its fields are lines "name = value". What stands before the first
// section belongs to one without a name. Lines that begin with # and lines of any other kind are passed over. In names and
// values a line break is written \n, a carriage return \r, a tab \t, a blank at an end \s and a backslash \\; any other
// character after a backslash stands for itself. Plain blanks around fields and values are not kept.
struct TextSection {
    std::string name;
    std::vector<std::pair<std::string, std::string>> fields;

    // Empty if there is no such field; the first of several.
    std::string valueOf(std::string_view field) const;
    // Takes the field's place, if there is one; an empty value takes it out.
    void set(std::string_view field, const std::string& value);
};
using TextSections = std::vector<TextSection>;

// Any bytes.
TextSections readSections(std::string_view text);
std::string writeSections(const TextSections& sections);

// The same from and to a file: none of one that is missing, unreadable or larger than `limit` bytes. Written in one step
// (see platform::writeFile); false, with the file as it was, if that failed. Any thread but the audio thread.
TextSections loadSections(const std::string& path, std::size_t limit = 16 << 20);
bool saveSections(const std::string& path, const TextSections& sections);

}  // namespace vantoric

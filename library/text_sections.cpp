#include "library/text_sections.h"

#include <algorithm>

#include "platform/files.h"

namespace vantoric {

namespace {

struct Escape {
    char character, letter;
};
constexpr Escape escapes[] = {{'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}, {'\\', '\\'}};

// Also what would mean something else at an end: a blank, a remark, a section.
std::string escaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isFirst = i == 0, isLast = i + 1 == text.size();
        const auto* const escape =
            std::find_if(std::begin(escapes), std::end(escapes), [=](Escape e) { return e.character == c; });
        if (escape != std::end(escapes))
            out.append({'\\', escape->letter});
        else if (c == ' ' && (isFirst || isLast))
            out.append({'\\', 's'});
        else if (isFirst && (c == '#' || c == '['))
            out.append({'\\', c});
        else
            out += c;
    }
    return out;
}

std::string unescaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const char letter = text[++i];
        const auto* const escape =
            std::find_if(std::begin(escapes), std::end(escapes), [=](Escape e) { return e.letter == letter; });
        out += escape != std::end(escapes) ? escape->character : letter == 's' ? ' ' : letter;
    }
    return out;
}

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

void readLine(std::string_view line, TextSections& sections) {
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') return;
    // A name may end in brackets of its own.
    if (text.size() >= 2 && text.front() == '[' && text.back() == ']') {
        sections.push_back({unescaped(text.substr(1, text.size() - 2)), {}});
        return;
    }
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return;
    if (sections.empty()) sections.emplace_back();
    sections.back().fields.emplace_back(unescaped(trimmed(text.substr(0, equals))), unescaped(trimmed(text.substr(equals + 1))));
}

}  // namespace

std::string TextSection::valueOf(std::string_view field) const {
    const auto found = std::find_if(fields.begin(), fields.end(), [=](const auto& f) { return f.first == field; });
    return found != fields.end() ? found->second : std::string();
}

void TextSection::set(std::string_view field, const std::string& value) {
    const auto found = std::find_if(fields.begin(), fields.end(), [=](const auto& f) { return f.first == field; });
    if (value.empty()) {
        if (found != fields.end()) fields.erase(found);
    } else if (found != fields.end()) {
        found->second = value;
    } else {
        fields.emplace_back(field, value);
    }
}

TextSections readSections(std::string_view text) {
    TextSections sections;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        readLine(text.substr(0, end), sections);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return sections;
}

std::string writeSections(const TextSections& sections) {
    std::string text;
    for (const TextSection& section : sections) {
        if (section.fields.empty()) continue;
        const bool isFirst = text.empty();
        if (!isFirst) text += '\n';
        if (!isFirst || !section.name.empty()) text.append("[").append(escaped(section.name)).append("]\n");
        for (const auto& [field, value] : section.fields) text += escaped(field) + " = " + escaped(value) + "\n";
    }
    return text;
}

TextSections loadSections(const std::string& path, std::size_t limit) {
    std::vector<std::uint8_t> bytes;
    platform::readFile(path, bytes, limit);
    return readSections({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

bool saveSections(const std::string& path, const TextSections& sections) {
    const std::string text = writeSections(sections);
    return platform::writeFile(path, text.data(), text.size());
}

}  // namespace vantoric

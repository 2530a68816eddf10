#include "editor/style.h"

#include <cmath>
#include <map>
#include <utility>

namespace vantoric {
namespace {

std::uint8_t between(std::uint8_t a, std::uint8_t b, double t) {
    return static_cast<std::uint8_t>(std::lround(a + (static_cast<double>(b) - a) * t));
}

using FontKey = std::pair<style::Face, double>;
std::map<FontKey, VSTGUI::SharedPointer<VSTGUI::CFontDesc>>& fonts() {
    static std::map<FontKey, VSTGUI::SharedPointer<VSTGUI::CFontDesc>> all;
    return all;
}

}  // namespace

Color mix(const Color& a, const Color& b, double t) {
    return {between(a.red, b.red, t), between(a.green, b.green, t), between(a.blue, b.blue, t), a.alpha};
}

Color fade(const Color& color, double t) {
    return {color.red, color.green, color.blue, static_cast<std::uint8_t>(std::lround(255 * t))};
}

namespace style {

VSTGUI::CFontRef font(Face face, double size) {
    static constexpr const char* families[] = {"Inter", "Inter Medium", "Inter Semi Bold", "Sora SemiBold"};
    auto& found = fonts()[{face, size}];
    if (!found) found = VSTGUI::makeOwned<VSTGUI::CFontDesc>(families[static_cast<int>(face)], size);
    return found;
}

void forgetFonts() { fonts().clear(); }

}  // namespace style
}  // namespace vantoric

#include "tests/window/window_rig.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "editor/model/pages.h"
#include "editor/model/window_size.h"

namespace testhost {

namespace fs = std::filesystem;
using vantoric::ControlEntry;
using vantoric::WidgetKind;
using vantoric::WindowPart;
namespace page = vantoric::page;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

// Measures of a menu, in units of the layout.
constexpr double rowHeight = 18, separatorHeight = 7, menuPadding = 4, scrolledByTurn = 3 * rowHeight;
constexpr unsigned menuGround = 0x1F252A;

double heightOf(const std::string& label) { return label == "-" ? separatorHeight : rowHeight; }

double unitOf(int size) { return vantoric::zoomOfSize(size) * (size >= 3 ? 1.5 : 1.0); }

}  // namespace

std::string pluginUnderTest() {
    const char* path = std::getenv("VANTORIC_TEST_PLUGIN");
    return path != nullptr ? path : DEFAULT_PLUGIN;
}

const fs::path& openerFolder() {
    static const vantoric::platform::ScratchFolder scratch;
    static const fs::path folder = scratch.path();
    return folder;
}

fs::path openedPages() { return openerFolder() / "opened"; }

std::optional<Box> menuBox(const Picture& picture, std::optional<Box> besides) {
    constexpr int shortest = 24;  // no stroke or letter is as wide
    std::optional<Box> box;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.rgb.data() + 3 * static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width);
        for (int x = 0, run = 0; x <= picture.width; ++x) {
            const std::uint8_t* p = row + 3 * x;
            const bool isBesides =
                besides && x >= besides->left - 3 && x < besides->right + 3 && y >= besides->top - 3 && y < besides->bottom + 3;
            if (x < picture.width && !isBesides && p[0] == menuGround >> 16 && p[1] == (menuGround >> 8 & 255) &&
                p[2] == (menuGround & 255)) {
                ++run;
                continue;
            }
            if (run >= shortest) {
                if (!box) box = Box{x - run, y, x, y + 1};
                box = Box{std::min(box->left, x - run), std::min(box->top, y), std::max(box->right, x), y + 1};
            }
            run = 0;
        }
    }
    return box;
}

bool isDrawn(WindowHost& host) {
    const Picture picture = host.glance();
    if (picture.isEmpty()) return false;
    const unsigned corner = picture.at(1, 1);
    for (int x = 0; x < picture.width; x += 7)
        if (picture.at(x, picture.height / 2) != corner && picture.at(x, picture.height / 2) != 0) return true;
    return false;
}

WindowRig::WindowRig(int size, HostAnswers answers, const std::function<void(const Installation&)>& prepare)
    : installation_(pluginUnderTest()),
      host_((installation_.setSize(size), prepare ? prepare(installation_) : void(), installation_.plugin()), std::move(answers)),
      unit_(unitOf(size)) {
    // Every layer and oscillator sounds, so that no touch wakes one besides what it is for.
    for (int l = 0; l < 4; ++l) {
        plugin().setParameter(parameter::Layer1On + l, 1);
        for (int o = 0; o < 3; ++o) plugin().setParameter(vantoric::hostIndex(parameter::On1 + o, l), 1);
    }
    plugin().render(512);
    start_ = plugin().chunk();
    if (!host_.open()) throw std::runtime_error("the window does not open");
}

void WindowRig::setUnit(int size) { unit_ = unitOf(size); }

Box WindowRig::box(const ControlEntry& entry) const {
    const vantoric::LayoutRect r = vantoric::controlRect(entry);
    const auto pixel = [this](double units) { return static_cast<int>(std::lround(units * unit_)); };
    return {pixel(r.x), pixel(r.y), pixel(r.x + r.width), pixel(r.y + r.height)};
}

Point WindowRig::middle(const ControlEntry& entry) const {
    const vantoric::LayoutRect r = vantoric::controlRect(entry);
    return vantoric::isKnob(entry) ? at(entry.x, entry.y) : at(r.x + r.width / 2.0, r.y + r.height / 2.0);
}

Point WindowRig::middle(WindowPart part) const {
    const vantoric::LayoutRect& r = vantoric::windowPart(part).rect;
    return at(r.x + r.width / 2.0, r.y + r.height / 2.0);
}

Picture WindowRig::pictureOf(const ControlEntry& entry) {
    const Box b = box(entry);
    return host_.picture().part(b.left, b.top, b.width(), b.height());
}

void WindowRig::reset() {
    closeMenus();
    plugin().setChunk(start_);
    plugin().render(512);
    for (const int first : {tag::envelopePage1 + 0, tag::matrixPage1 + 0, tag::lfoPage1 + 0, tag::insertPage1 + 0})
        click(controlWithTag(first));
    showLayer(0);
    host_.idle(60);
}

void WindowRig::showLayer(int layer) {
    click(controlWithTag(tag::layer1 + layer));
    layer_ = layer;
}

void WindowRig::show(const ControlEntry& entry) {
    const int p = entry.page;
    if (p >= page::insert1) return click(controlWithTag(tag::insertPage1 + p - page::insert1));
    if (p >= page::matrix1)
        return click(controlWithTag(p == page::matrix3 ? tag::matrixPage3 : tag::matrixPage1 + p - page::matrix1));
    if (p >= page::lfo1) return click(controlWithTag(tag::lfoPage1 + p - page::lfo1));
    if (p >= page::envelope1) return click(controlWithTag(tag::envelopePage1 + p - page::envelope1));
    if (p < page::sample1) return;
    const int oscillator = (p - page::sample1) / page::perOscillator;
    const ControlEntry& types = controlWithTag(parameter::SynType1 + oscillator);
    for (int type = 0; type < static_cast<int>(types.labels.size()); ++type)
        if (vantoric::Pages::pageOfSynthesis(oscillator, type) == p && row(types) != type) chooseFrom(types, type);
}

int WindowRig::row(const ControlEntry& entry) { return static_cast<int>(std::lround(value(entry) * 128)); }

void WindowRig::set(const ControlEntry& entry, float value) {
    plugin().setParameter(hostIndex(entry), value);
    host_.idle(120);  // two rounds, in which the window takes it up
}

void WindowRig::drag(const ControlEntry& entry, double right, double up) {
    const Point from = middle(entry);
    host_.drag(from.x, from.y, from.x + right, from.y - up);
}

void WindowRig::drop(WindowPart from, const ControlEntry& on) {
    const Point a = middle(from), b = middle(on);
    host_.drag(a.x, a.y, b.x, b.y);
}

std::optional<Box> WindowRig::openMenu(Point at, int button) {
    click(at, button);
    std::optional<Box> menu;
    host_.until([&] { return (menu = menuBox(host_.glance())).has_value(); }, 5);
    return menu;
}

Point WindowRig::rowPlace(const Box& menu, const std::vector<std::string>& labels, int row, double scrolled) const {
    double y = menuPadding - scrolled;
    for (int above = 0; above < row; ++above) y += heightOf(labels[static_cast<std::size_t>(above)]);
    return {menu.left + 12 * unit_, menu.top + (y + rowHeight / 2) * unit_};
}

bool WindowRig::choose(const Box& menu, const std::vector<std::string>& labels, int row) {
    double content = 2 * menuPadding;
    for (const std::string& label : labels) content += heightOf(label);
    const double shown = menu.height() / unit_, hidden = std::max(0.0, content - shown);
    double scrolled = 0;
    if (hidden > 2) {
        const Point over{menu.left + menu.width() / 2.0, menu.top + menu.height() / 2.0};
        host_.wheel(over.x, over.y, static_cast<int>(hidden / scrolledByTurn) + 2);
        const double below = (rowPlace({0, 0, 0, 0}, labels, row, 0).y / unit_ + rowHeight) - shown;
        const int turns = std::max(0, static_cast<int>(std::ceil(below / scrolledByTurn)));
        host_.wheel(over.x, over.y, -turns);
        scrolled = std::min(turns * scrolledByTurn, hidden);
    }
    click(rowPlace(menu, labels, row, scrolled));
    return host_.until([this] { return isCovered() || !hasMenu(); }, 5);
}

bool WindowRig::chooseFrom(const ControlEntry& list, int row) {
    const auto menu = openMenu(list);
    return menu && choose(*menu, labelsOf(list), row);
}

bool WindowRig::chooseSource(const ControlEntry& knob, int submenu, int row) {
    const auto menu = openMenu(knob, 3);
    if (!menu) return false;
    // "Reset", "Reset all", "-", learning, "-", then the submenus.
    const std::vector<std::string> rows{"", "", "-", "", "-", "", "", "", "", "", ""};
    const Point head = rowPlace(*menu, rows, 5 + submenu, 0);
    host_.move(head.x, head.y);
    std::optional<Box> panel;
    if (!host_.until([&] { return (panel = menuBox(host_.glance(), menu)).has_value(); }, 5)) return false;
    const Point choice{(panel->left + panel->right) / 2.0, panel->top + (menuPadding + (row + 0.5) * rowHeight) * unit_};
    host_.move((head.x + choice.x) / 2, head.y);
    host_.move(choice.x, head.y);
    click(choice);
    return host_.until([this] { return isCovered() || !hasMenu(); }, 5);
}

// The word mark is the brightest there is.
bool WindowRig::isCovered() {
    const Box mark = box(controlWithTag(tag::shop));
    const Picture picture = host_.glance().part(mark.left, mark.top, mark.width(), mark.height());
    constexpr std::uint8_t bright = 0xC0;
    return std::none_of(picture.rgb.begin(), picture.rgb.end(), [](std::uint8_t channel) { return channel > bright; });
}

void WindowRig::closeMenus() {
    for (int tried = 0; tried < 8 && (hasMenu() || isCovered()); ++tried) host_.key("Escape");
}

bool WindowRig::typePath(const std::string& path) {
    if (!host_.until([this] { return isCovered(); }, 10)) return false;
    host_.idle(200);  // the keys come to the window
    host_.control("a");
    host_.type(path);
    host_.key("Return");
    host_.idle(200);
    return true;
}

std::vector<float> WindowRig::parameters() {
    std::vector<float> values;
    for (int i = 0; i < vantoric::parameterCount; ++i) values.push_back(plugin().parameter(i));
    return values;
}

std::vector<int> WindowRig::changedSince(const std::vector<float>& before) {
    std::vector<int> changed;
    for (int i = 0; i < vantoric::parameterCount; ++i)
        if (plugin().parameter(i) != before[static_cast<std::size_t>(i)]) changed.push_back(i);
    return changed;
}

WindowRig::Gestures WindowRig::gestures() {
    return {plugin().timesAsked(wire::hostEditBegins), plugin().timesAsked(wire::hostEditEnds)};
}

const ControlEntry& controlNamed(const char* name) { return vantoric::controlEntry(vantoric::controlIndexForName(name)); }
const ControlEntry& controlWithTag(int tag) { return vantoric::controlEntry(vantoric::controlIndexForTag(tag)); }

std::vector<std::string> labelsOf(const ControlEntry& entry) { return {entry.labels.begin(), entry.labels.end()}; }

namespace {
std::unique_ptr<WindowRig> shared;
}

WindowRig& sharedRig() {
    if (!shared) shared = std::make_unique<WindowRig>();
    return *shared;
}

void dropSharedRig() { shared.reset(); }

}  // namespace testhost

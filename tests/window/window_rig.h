// What the tests of the window share: an installation of their own, and a hand that finds the controls by the table.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/model/control_table.h"
#include "editor/model/window_layout.h"
#include "tests/window/installation.h"
#include "tests/window/window_host.h"

namespace testhost {

// The plug-in under test, by VANTORIC_TEST_PLUGIN or the build's own.
std::string pluginUnderTest();

// A folder ahead in the search for programs, and the file in which pages that were opened in a browser are written down.
const std::filesystem::path& openerFolder();
std::filesystem::path openedPages();

struct Point {
    double x, y;
};
struct Box {
    int left, top, right, bottom;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

// The box around all stretches of a menu's ground in a picture, those within `besides` left out; none if there is no menu.
std::optional<Box> menuBox(const Picture& picture, std::optional<Box> besides = std::nullopt);

// Whether the window shows more than a plain ground.
bool isDrawn(WindowHost& host);

// A plug-in with its window open, all layers and oscillators on, and every parameter's old value at hand.
class WindowRig {
public:
    // `prepare` may change the installation before the plug-in is loaded.
    explicit WindowRig(int size = 3, HostAnswers answers = {}, const std::function<void(const Installation&)>& prepare = {});

    WindowHost& host() { return host_; }
    PluginHost& plugin() { return host_.plugin(); }
    const Installation& installation() const { return installation_; }

    // Pixels of a unit of the layout.
    double unit() const { return unit_; }
    void setUnit(int size);
    Point at(double x, double y) const { return {x * unit_, y * unit_}; }
    // Where a control, or a part beside the table, takes a click.
    Point middle(const vantoric::ControlEntry& entry) const;
    Point middle(vantoric::WindowPart part) const;
    Box box(const vantoric::ControlEntry& entry) const;
    Picture pictureOf(const vantoric::ControlEntry& entry);

    // The patch as it was at the start, its first layer and first pages on show, by the hand alone.
    void reset();
    // Brings a control to show: chooses its tab, or the type of its oscillator.
    void show(const vantoric::ControlEntry& entry);
    void showLayer(int layer);
    int layer() const { return layer_; }
    int hostIndex(const vantoric::ControlEntry& entry) const { return vantoric::hostIndexOfTag(entry.tag, layer_); }
    float value(const vantoric::ControlEntry& entry) { return plugin().parameter(hostIndex(entry)); }
    int row(const vantoric::ControlEntry& entry);                // of a list
    void set(const vantoric::ControlEntry& entry, float value);  // as a host's automation does

    void click(Point p, int button = 1) { host_.click(p.x, p.y, button); }
    void click(const vantoric::ControlEntry& entry, int button = 1) { click(middle(entry), button); }
    // Drags by so many pixels of the window, to the right and up.
    void drag(const vantoric::ControlEntry& entry, double right, double up);
    void drop(vantoric::WindowPart from, const vantoric::ControlEntry& on);

    // ---- menus. What opens one waits until it shows, what chooses until it is gone.

    std::optional<Box> openMenu(Point at, int button = 1);
    std::optional<Box> openMenu(const vantoric::ControlEntry& entry, int button = 1) { return openMenu(middle(entry), button); }
    // Clicks a row of the menu that is open in `menu`, scrolling to it if need be. False if no menu went away by it.
    bool choose(const Box& menu, const std::vector<std::string>& labels, int row);
    // The middle of a row of an open menu, scrolled by so many units.
    Point rowPlace(const Box& menu, const std::vector<std::string>& labels, int row, double scrolled = 0) const;
    bool chooseFrom(const vantoric::ControlEntry& list, int row);
    // A row of a submenu of the menu of a knob.
    bool chooseSource(const vantoric::ControlEntry& knob, int submenu, int row);
    bool hasMenu() { return menuBox(host_.glance()).has_value(); }
    // A box, question, chooser or the browser is open: all else is dark.
    bool isCovered();
    void closeMenus();
    // Types a path, or a name for what is saved, into the chooser that opens, in small letters, and takes it. False if none
    // opens.
    bool typePath(const std::string& path);

    std::vector<float> parameters();
    // The indices whose values differ from those.
    std::vector<int> changedSince(const std::vector<float>& before);

    struct Gestures {
        int begun, ended;
        bool operator==(const Gestures&) const = default;
    };
    Gestures gestures();

private:
    Installation installation_;
    WindowHost host_;
    double unit_;
    int layer_ = 0;
    std::vector<unsigned char> start_;
};

const vantoric::ControlEntry& controlNamed(const char* name);
const vantoric::ControlEntry& controlWithTag(int tag);
std::vector<std::string> labelsOf(const vantoric::ControlEntry& entry);

// The rig that tests share one after the other: it takes a while to make.
WindowRig& sharedRig();
void dropSharedRig();

}  // namespace testhost

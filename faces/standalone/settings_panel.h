// Where sound and keyboards are chosen: a panel above the bar.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editor/panel_parts.h"
#include "editor/pen.h"
#include "faces/standalone/alsa_device.h"
#include "faces/standalone/sound_system.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric::standalone {

class SettingsPanel : public VSTGUI::CView {
public:
    static constexpr double width = 700, height = 344;  // window units

    struct Input {
        std::string name;
        bool isWanted = true;
        bool operator==(const Input&) const = default;
    };
    // What stands now. Compared as a whole; a change is drawn anew.
    struct Shown {
        SoundChoice choice;
        std::vector<std::pair<std::string, std::string>> devices;  // name and description
        std::string system;                                        // that plays
        int rate = 0, period = 0;                                  // in force
        std::string priority, problem, midi;
        bool hasMidi = true;
        std::vector<Input> inputs;
        bool operator==(const Shown&) const = default;
    };

    struct Told {
        std::function<void(const SoundChoice&)> chosen;
        std::function<void(const std::string& name, bool wanted)> inputWanted;
        std::function<void()> closeWanted;
    };
    SettingsPanel(const VSTGUI::CRect& area, Told told);

    void show(const Shown& shown);

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    CLASS_METHODS_NOCOPY(SettingsPanel, VSTGUI::CView)

private:
    // Something to click. What it stands for: a row of its list, or a number.
    enum class Kind { close, system, device, rate, period, input };
    struct Item {
        Kind kind;
        int value;
        VSTGUI::CRect place;
        std::string label, detail;
        bool isOn, isOff;
    };

    void layOut();
    void addChips(Kind kind, double top, const std::vector<std::pair<int, std::string>>& choices, int chosen, bool isOff);
    void addRows();
    int itemAt(VSTGUI::CPoint where) const;
    void choose(const Item& item);
    bool isDeviceOpen() const { return shown_.choice.kind == SoundKind::alsa || shown_.choice.kind == SoundKind::automatic; }
    void drawItem(Pen& pen, const Item& item, bool isHovered) const;
    void drawRow(Pen& pen, const Item& item, bool isHovered) const;
    void drawHeadings(Pen& pen) const;
    void drawList(Pen& pen, const VSTGUI::CRect& list, Kind kind) const;
    void drawFoot(Pen& pen) const;
    VSTGUI::CRect deviceList() const;
    VSTGUI::CRect inputList() const;

    Told told_;
    Shown shown_;
    std::vector<Item> items_;
    ScrollBar deviceBar_, inputBar_;
    int hovered_ = -1;
};

}  // namespace vantoric::standalone

// The bar between the editor and the keys: recorder, hands, news, tempo, load, sound.
#pragma once

#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric::standalone {

class StripBar : public VSTGUI::CView {
public:
    enum class Part { none, record, keys, octaveDown, octaveUp, pedal, panic, tempo, load, dropouts, sound };

    // What it tells. Compared as a whole; a change is drawn anew.
    struct Shown {
        bool isRecording = false, areKeysShown = true, isPedalDown = false, isHeard = false, isPanelOpen = false;
        int octave = 3, recordedSeconds = 0, dropouts = 0;
        int load = 0;  // percent
        double tempo = 120;
        std::string news, sound;
        bool operator==(const Shown&) const = default;
    };

    // `pressed` gets what was clicked, the dropouts only where there are any; `tempoWanted` a tempo by dragging or turning; a
    // double click asks for 120.
    StripBar(const VSTGUI::CRect& area, std::function<void(Part)> pressed, std::function<void(double)> tempoWanted);

    void show(const Shown& shown);
    VSTGUI::CRect place(Part part) const;
    // What the pointer is over; what a part is for, empty for those that say it themselves.
    Part hovered() const { return hovered_; }
    static const char* tooltip(Part part);

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    CLASS_METHODS_NOCOPY(StripBar, VSTGUI::CView)

private:
    Part partAt(VSTGUI::CPoint where) const;
    void setHovered(Part part);
    void drawButton(Pen& pen, Part part, const std::string& label, bool isOn);
    void drawRecord(Pen& pen);
    void drawOctave(Pen& pen);
    void drawTempo(Pen& pen);
    void drawLoad(Pen& pen);
    void drawDropouts(Pen& pen);
    void drawSound(Pen& pen);

    std::function<void(Part)> pressed_;
    std::function<void(double)> tempoWanted_;
    Shown shown_;
    Part hovered_ = Part::none;
    bool isDraggingTempo_ = false;
    double dragFrom_ = 0, tempoFrom_ = 0;
};

}  // namespace vantoric::standalone

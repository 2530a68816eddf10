// What stands behind the controls: band, panels, titles, labels, and the lines that lead from block to block.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "editor/pen.h"
#include "editor/picture.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric {

// What the window tells between its controls, beyond what never changes.
struct BackdropState {
    struct MatrixRow {
        int slot = 1;         // as shown
        bool isUsed = false;  // has a source and a destination
        Color source = style::output;
        friend bool operator==(const MatrixRow&, const MatrixRow&) = default;
    };
    std::array<MatrixRow, 5> matrix{};
    int slotsUsed = 0;
    std::vector<std::string> driven;  // by the LFO on show, up to five
    bool hasLfoTargets = true;        // false on the step page, which has no room for them
    bool isMultilayer = false;
    int arpeggiatorStep = -1;  // 0 to 15, the one that plays
    std::array<float, 3> equalizer{0.5f, 0.5f, 0.5f};
    bool isSerial = false;  // the filters

    friend bool operator==(const BackdropState&, const BackdropState&) = default;
};

class Backdrop : public VSTGUI::CView {
public:
    // `clicked` hears of clicks on the ground.
    Backdrop(const VSTGUI::CRect& area, std::function<void()> clicked);

    // Draws anew what differs.
    void setState(const BackdropState& state);

    void draw(VSTGUI::CDrawContext* context) override;
    void drawRect(VSTGUI::CDrawContext* context, const VSTGUI::CRect& updated) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;

    CLASS_METHODS_NOCOPY(Backdrop, VSTGUI::CView)

private:
    void drawGround(Pen& pen) const;
    void drawBand(Pen& pen) const;
    void drawTitles(Pen& pen) const;
    void drawReach(Pen& pen) const;
    void drawMultilayer(Pen& pen) const;
    void drawEqualizer(Pen& pen) const;
    void drawLead(Pen& pen) const;
    void drawLfoTargets(Pen& pen) const;
    void drawMatrix(Pen& pen) const;
    void drawSteps(Pen& pen) const;

    // What changes apart from the rest.
    struct Part {
        VSTGUI::CRect area;
        void (Backdrop::*draw)(Pen&) const;
        KeptDrawing kept;
    };
    void change(Part& part);

    Picture ground_{true};  // all that never changes
    Part reach_, multilayer_, equalizer_, lead_, targets_, matrix_, steps_;
    std::function<void()> clicked_;
    BackdropState state_;
};

}  // namespace vantoric

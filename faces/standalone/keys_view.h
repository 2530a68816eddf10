// The keys below the editor.
#pragma once

#include <bitset>
#include <functional>
#include <string>
#include <vector>

#include "editor/pen.h"
#include "faces/standalone/hands.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric::standalone {

// The 88 keys of a piano, or as many in the middle as there is room for. A key sounds the louder the nearer to its front it is
// hit; a press that moves on plays each key on its way. Keys are lit whoever plays them, and bear the signs of the computer's
// keys that play them.
class KeysView : public VSTGUI::CView {
public:
    using Sign = std::function<std::string(unsigned code)>;
    KeysView(const VSTGUI::CRect& area, Hands& hands, const Player& player, Sign sign);

    // The regular call: what has changed is drawn anew.
    void follow();

    // The key at a place, -1 for none, and the velocity there.
    int keyAt(VSTGUI::CPoint where) const;
    int velocityAt(VSTGUI::CPoint where) const;
    VSTGUI::CRect placeOf(int key) const;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;

    CLASS_METHODS_NOCOPY(KeysView, VSTGUI::CView)

private:
    void hit(int key, int velocity);
    void drawWhite(Pen& pen, int key) const;
    void drawBlack(Pen& pen, int key) const;
    std::string signOf(int key) const;

    Hands& hands_;
    const Player& player_;
    Sign sign_;
    int lowest_, highest_;
    std::bitset<128> lit_;
    int octaveShown_ = -1, held_ = -1;
    bool isHolding_ = false;
};

}  // namespace vantoric::standalone

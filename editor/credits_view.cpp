#include "editor/credits_view.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "editor/overlay.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

namespace {

constexpr double padding = 18, widest = 460, tallest = 470, lineHeight = 15, titleHeight = 28, textSize = 10, barWidth = 4;

struct Entry {
    const char* left;
    const char* right;  // empty: `left` is a text of several lines
};
struct Section {
    const char* title;
    std::vector<Entry> entries;
};

const std::array<Section, 4>& sections() {
    static const std::array<Section, 4> all{{
        {"The instrument",
         {{"Vantoric was made by people who wanted one synthesizer for everything between a bass that shakes the floor and a pad "
           "that "
           "is hardly there: sound engine, filters, effects, patches, samples and this window.",
           ""},
          {"Free software under the GNU General Public License, version 3", "GPL 3"},
          {"Sound engine, effects and window", "The Vantoric team"},
          {"Factory patches, waves and songs", "The Vantoric team"},
          {"Drawings and design of the window", "The Vantoric team"}}},
        {"What it stands on",
         {{"VSTGUI, the window library", "BSD 3-Clause"},
          {"Inter, typeface by Rasmus Andersson", "SIL OFL 1.1"},
          {"Sora, typeface by Jonathan Barnbrook and Juli\u00e1n Moncada", "SIL OFL 1.1"},
          {"cairo, drawing", "LGPL 2.1 or MPL 1.1"},
          {"Pango and GLib, text", "LGPL 2.1 or later"},
          {"HarfBuzz, Fontconfig, libxkbcommon, X11, XCB", "MIT"},
          {"FreeType, glyphs", "FreeType License"}}},
        {"VSTGUI",
         {{"Copyright 2019-2024, Steinberg Media Technologies GmbH. All rights reserved.", ""},
          {"Redistribution and use in source and binary forms, with or without modification, are permitted provided that the "
           "following "
           "conditions are met: Redistributions of source code must retain the above copyright notice, this list of conditions "
           "and the "
           "following disclaimer. Redistributions in binary form must reproduce the above copyright notice, this list of "
           "conditions and "
           "the following disclaimer in the documentation and/or other materials provided with the distribution. Neither the "
           "name of the "
           "Steinberg Media Technologies nor the names of its contributors may be used to endorse or promote products derived "
           "from this "
           "software without specific prior written permission.",
           ""},
          {"THIS SOFTWARE IS PROVIDED BY THE COPYRIGHT HOLDERS AND CONTRIBUTORS \"AS IS\" AND ANY EXPRESS OR IMPLIED WARRANTIES, "
           "INCLUDING, "
           "BUT NOT LIMITED TO, THE IMPLIED WARRANTIES OF MERCHANTABILITY AND FITNESS FOR A PARTICULAR PURPOSE ARE DISCLAIMED. "
           "IN NO EVENT "
           "SHALL THE COPYRIGHT OWNER OR CONTRIBUTORS BE LIABLE FOR ANY DIRECT, INDIRECT, INCIDENTAL, SPECIAL, EXEMPLARY, OR "
           "CONSEQUENTIAL "
           "DAMAGES (INCLUDING, BUT NOT LIMITED TO, PROCUREMENT OF SUBSTITUTE GOODS OR SERVICES; LOSS OF USE, DATA, OR PROFITS; "
           "OR BUSINESS "
           "INTERRUPTION) HOWEVER CAUSED AND ON ANY THEORY OF LIABILITY, WHETHER IN CONTRACT, STRICT LIABILITY, OR TORT "
           "(INCLUDING "
           "NEGLIGENCE OR OTHERWISE) ARISING IN ANY WAY OUT OF THE USE OF THIS SOFTWARE, EVEN IF ADVISED OF THE POSSIBILITY OF "
           "SUCH DAMAGE.",
           ""}}},
        {"Thanks",
         {{"To everybody who wrote down how filters, reverberation and oscillators work and let others read it, to those who "
           "package free "
           "software with patience, and to you for playing.",
           ""}}},
    }};
    return all;
}

}  // namespace

CreditsView::CreditsView(const CRect& area, std::string version, std::function<void()> closed)
    : LayerView(area), version_(std::move(version)), closed_(std::move(closed)) {
    setTransparency(true);
    layOut();
}

void CreditsView::layOut() {
    const CRect area = CRect(getViewSize()).inset(4, 4);
    const double width = std::min(widest, area.getWidth()), height = std::min(tallest, area.getHeight());
    const CPoint middle = area.getCenter();
    panel_ = {std::round(middle.x - width / 2), std::round(middle.y - height / 2), 0, 0};
    panel_.setWidth(width);
    panel_.setHeight(height);
    const double head = height < 200 ? 30 : 74;
    textArea_ = {panel_.left + padding, panel_.top + head, panel_.right - padding - barWidth - 4, panel_.bottom - 8};
    double top = 0;
    for (const Section& section : sections()) {
        top = add(Kind::title, section.title, "", top);
        for (const Entry& entry : section.entries)
            top = add(*entry.right == '\0' ? Kind::text : Kind::entry, entry.left, entry.right, top);
    }
    bar_.setPlace({panel_.right - padding - barWidth + 8, textArea_.top, panel_.right - padding + 8, textArea_.bottom}, top + 8,
                  textArea_.getHeight());
}

// Returns where the next line stands.
double CreditsView::add(Kind kind, const std::string& left, const std::string& right, double top) {
    if (kind == Kind::title) {
        lines_.push_back({kind, left, right, top});
        return top + titleHeight;
    }
    if (kind == Kind::entry) {
        lines_.push_back({kind, left, right, top});
        return top + lineHeight + 1;
    }
    for (const std::string& line : wrapped(left, Face::medium, textSize, textArea_.getWidth())) {
        lines_.push_back({kind, line, "", top});
        top += lineHeight;
    }
    return top + 5;
}

CRect CreditsView::closeRect() const { return {panel_.right - 32, panel_.top + 8, panel_.right - 8, panel_.top + 32}; }

void CreditsView::dismiss() {
    const auto alive = VSTGUI::shared(this);
    if (const auto closed = std::exchange(closed_, nullptr)) closed();
}

void CreditsView::scrollBy(double distance) {
    bar_.scrollBy(distance);
    invalidRect(panel_);
}

// ---- drawing

void CreditsView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawVeil(pen, getViewSize());
    drawPanel(pen, panel_, 8, style::panel);
    drawHead(pen);
    {
        const Pen::Clip clip(pen, textArea_.left - 1, textArea_.top, textArea_.getWidth() + 2, textArea_.getHeight());
        for (const Line& line : lines_) {
            const double top = line.top - bar_.position();
            if (top > -titleHeight && top < textArea_.getHeight()) drawLine(pen, line);
        }
    }
    bar_.draw(pen, style::panel);
    setDirty(false);
}

void CreditsView::drawHead(Pen& pen) const {
    drawCross(pen, closeRect().getCenter(), isCloseHovered_ ? style::white : style::text2);
    const double left = panel_.left + padding;
    if (panel_.getHeight() < 200) {
        const double width = pen.text(left, panel_.top + 20, "Vantoric", Face::title, 11, style::text);
        pen.text(left + width + 10, panel_.top + 20, version_, Face::medium, 9.5, style::text2);
        return;
    }
    // The ring of the word mark, as a knob that is turned up.
    const double pi = std::numbers::pi, x = left + 17, y = panel_.top + 38;
    pen.arc(x, y, 15, 0.75 * pi, 2.25 * pi, style::line, 4);
    pen.arc(x, y, 15, 0.75 * pi, 1.75 * pi, style::oscillators, 4);
    pen.dot(x, y, 4.5, style::handle);
    pen.text(left + 46, panel_.top + 36, "Vantoric", Face::title, 19, style::text);
    pen.text(left + 46, panel_.top + 52, version_, Face::medium, 9.5, style::text2);
    pen.rect(panel_.left + padding, textArea_.top - 6, panel_.getWidth() - 2 * padding, pen.hair(), style::line);
}

void CreditsView::drawLine(Pen& pen, const Line& line) const {
    const double top = textArea_.top + line.top - bar_.position();
    if (line.kind == Kind::title) {
        pen.text(textArea_.left, top + 18, line.left, Face::title, 10.5, style::oscillators);
        return;
    }
    if (line.kind == Kind::text) {
        pen.text(textArea_.left, top + 11, line.left, Face::medium, textSize, style::text2);
        return;
    }
    const double right = pen.text(textArea_.right, top + 11, line.right, Face::medium, 9.5, style::text3, Align::right);
    pen.text(textArea_.left, top + 11, line.left, Face::medium, textSize, style::text, Align::left,
             textArea_.getWidth() - right - 12);
}

// ---- the pointer and keys

void CreditsView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (bar_.press(event.mousePosition)) return invalidRect(panel_);
    if (!panel_.pointInside(event.mousePosition) || closeRect().pointInside(event.mousePosition)) dismiss();
}

void CreditsView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (bar_.isHeld()) {
        bar_.drag(event.mousePosition);
        return invalidRect(panel_);
    }
    const bool isOver = closeRect().pointInside(event.mousePosition);
    if (isOver == isCloseHovered_) return;
    isCloseHovered_ = isOver;
    invalidRect(closeRect());
}

void CreditsView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    bar_.release();
    invalidRect(panel_);
}

void CreditsView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    bar_.release();
}

void CreditsView::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    scrollBy(-3 * lineHeight * event.deltaY);
}

void CreditsView::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    const double page = textArea_.getHeight() - lineHeight;
    switch (event.virt) {
        case VirtualKey::Escape:
        case VirtualKey::Return:
        case VirtualKey::Enter: return dismiss();
        case VirtualKey::Up: return scrollBy(-lineHeight);
        case VirtualKey::Down: return scrollBy(lineHeight);
        case VirtualKey::PageUp: return scrollBy(-page);
        case VirtualKey::Space:
        case VirtualKey::PageDown: return scrollBy(page);
        case VirtualKey::Home: return scrollBy(-1e6);
        case VirtualKey::End: return scrollBy(1e6);
        default: return;
    }
}

}  // namespace vantoric

// What is drawn again and again alike, kept as the pixels of the zoom in force.
#pragma once

#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/cbitmap.h"

namespace vantoric {

// One kept picture of a rectangle of the window. On the windows' one thread.
class Picture {
public:
    using Draw = std::function<void(Pen& pen)>;

    // An opaque picture is shown faster, but must be filled wholly by what draws it.
    explicit Picture(bool isOpaque = false) : isOpaque_(isOpaque) {}

    // Shows the rectangle `area`, in window units, as `draw` draws it: `draw` is called at first, when the zoom is another,
    // and when the rectangle no longer falls on the same pixels, and draws as it would in the window. What it draws outside
    // the rectangle is lost.
    void show(Pen& pen, const VSTGUI::CRect& area, const Draw& draw);
    // The next `show` draws anew.
    void forget() { bitmap_ = nullptr; }

    // The bytes that it takes; 0 while there is none.
    std::size_t bytes() const;

private:
    struct Pixels {
        double left = 0, top = 0, width = 0, height = 0;
        friend bool operator==(const Pixels&, const Pixels&) = default;
    };
    void render(const Draw& draw);

    bool isOpaque_;
    VSTGUI::SharedPointer<VSTGUI::CBitmap> bitmap_;
    double scale_ = 0;
    Pixels pixels_;
};

// What a view draws, kept while the view stays as it is: from the second time on that it draws the same, so that what changes
// with every redraw costs no picture too. All of them together take no more than a few tens of megabytes; what finds no room is
// drawn each time.
class KeptDrawing {
public:
    KeptDrawing() = default;
    ~KeptDrawing() { forget(); }
    KeptDrawing(const KeptDrawing&) = delete;
    KeptDrawing& operator=(const KeptDrawing&) = delete;

    // As `Picture::show`. What `draw` draws may differ only after `changed`.
    void show(Pen& pen, const VSTGUI::CRect& area, const Picture::Draw& draw);
    void changed() { forget(); }

private:
    void forget();

    Picture picture_;
    double drawnScale_ = 0;  // at which it was drawn since it changed
};

// Shows what `draw` draws in `area` from a picture that all callers of the same `key` share: it must not depend on anything
// but the key and the place. Pictures are told apart by the zoom and by how the place falls between two pixels.
void showShared(Pen& pen, const std::string& key, const VSTGUI::CRect& area, const Picture::Draw& draw);
// Frees them all, ahead of the window library's end.
void forgetSharedPictures();

}  // namespace vantoric

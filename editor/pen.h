// What the window is drawn with: the few shapes that it is made of, in window units, crisp at every zoom.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "editor/style.h"
#include "vstgui/lib/cdrawcontext.h"
#include "vstgui/lib/cgraphicspath.h"

namespace vantoric {

enum class Align { left, centre, right };
enum class Pointing { up, down, left, right };

// Radii of a rounded rectangle's corners, clockwise from the left upper one.
struct Corners {
    double leftTop, rightTop, rightBottom, leftBottom;
    Corners(double all) : leftTop(all), rightTop(all), rightBottom(all), leftBottom(all) {}  // NOLINT(*-explicit-*)
    Corners(double lt, double rt, double rb, double lb) : leftTop(lt), rightTop(rt), rightBottom(rb), leftBottom(lb) {}
};

// For one drawing call; the context outlives it. Angles in radians, clockwise from three o'clock. Edges of rectangles snap
// to whole pixels of the present zoom.
class Pen {
public:
    using Point = VSTGUI::CPoint;
    using Points = std::vector<Point>;

    explicit Pen(VSTGUI::CDrawContext& context);

    // One pixel, or a little more at high zoom, in window units.
    double hair() const { return hair_; }
    // Pixels a window unit.
    double scale() const { return scale_; }

    void rect(double x, double y, double w, double h, const Color& fill);
    void round(double x, double y, double w, double h, const Corners& corners, const Color& fill);
    // The same as an outline inside the rectangle's edge.
    void roundLine(double x, double y, double w, double h, const Corners& corners, const Color& color, double width = 0);
    void verticalGradient(double x, double y, double w, double h, const Corners& corners, const Color& top, const Color& bottom);
    void dot(double x, double y, double r, const Color& fill);
    void verticalGradientDot(double x, double y, double r, const Color& top, const Color& bottom);
    // A light around a point that fades to nothing at `r`.
    void glow(double x, double y, double r, const Color& color);
    void arc(double x, double y, double r, double from, double to, const Color& color, double width, bool roundEnds = false);
    void line(const Points& points, const Color& color, double width, bool dashed = false);
    void polygon(const Points& points, const Color& fill);
    void polygonLine(const Points& points, const Color& color, double width);
    void bezier(Point from, Point control1, Point control2, Point to, const Color& color, double width);
    // A filled piece of a disc between two angles.
    void pie(double x, double y, double r, double from, double to, const Color& fill);
    // The surface between the points and the height `base`, fading towards it. Its two corners at the base may be round.
    void filledCurve(const Points& points, double base, const Color& color, double cornerRadius = 0);

    void chevron(double x, double y, Pointing pointing, double r, const Color& color, double width = 1.2);
    void star(double x, double y, double r, const Color& color, bool filled);
    void power(double x, double y, double r, const Color& color);
    // Two columns of three dots: something to take hold of.
    void dots(double x, double y, const Color& color);
    void tick(double x, double y, const Color& color);

    // One line of text with its base line at `y`; `x` is where it begins, its middle or its end. A text wider than
    // `maxWidth` (0: no limit) ends in "...". Returns its width.
    double text(double x, double y, const std::string& text, style::Face face, double size, const Color& color,
                Align align = Align::left, double maxWidth = 0);
    double textWidth(const std::string& text, style::Face face, double size);

    // Nothing is drawn outside the rectangle until the object ends. It narrows a clip that stands.
    class Clip {
    public:
        Clip(Pen& pen, double x, double y, double w, double h);
        ~Clip();
        Clip(const Clip&) = delete;
        Clip& operator=(const Clip&) = delete;

    private:
        VSTGUI::CDrawContext& context_;
        VSTGUI::CRect before_;
    };

    // The clip that stands, out to the edges of the pixels that it touches, until the object ends: within a pixel it is a shape
    // that the display has to fill and to lay under all that is drawn. What is drawn anew is always whole pixels, so nothing is
    // drawn twice.
    class WholePixels {
    public:
        explicit WholePixels(Pen& pen);
        ~WholePixels();
        WholePixels(const WholePixels&) = delete;
        WholePixels& operator=(const WholePixels&) = delete;

    private:
        VSTGUI::CDrawContext& context_;
        VSTGUI::CRect before_;
    };

    VSTGUI::CDrawContext& context() { return context_; }

private:
    using Path = VSTGUI::SharedPointer<VSTGUI::CGraphicsPath>;
    Path newPath();
    Path roundPath(double x, double y, double w, double h, const Corners& corners);
    Path pathOf(const Points& points, bool closed);
    void fill(const Path& path, const Color& color);
    void stroke(const Path& path, const Color& color, double width, bool roundEnds, bool dashed = false);
    double snap(double position) const;

    VSTGUI::CDrawContext& context_;
    double scale_;  // pixels a window unit
    double hair_;
};

}  // namespace vantoric

#include "editor/pen.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "editor/lettering.h"
#include "vstgui/lib/cgradient.h"
#include "vstgui/lib/cgraphicstransform.h"

namespace vantoric {
namespace {

using VSTGUI::CCoord;
using VSTGUI::CGradient;
using VSTGUI::CLineStyle;
using VSTGUI::CPoint;
using VSTGUI::CRect;

double degrees(double radians) { return radians * 180.0 / std::numbers::pi; }

CRect around(double x, double y, double r) { return {x - r, y - r, x + r, y + r}; }

VSTGUI::SharedPointer<CGradient> gradient(const Color& first, const Color& last) {
    return VSTGUI::owned(CGradient::create(0, 1, first, last));
}

// Without the last character, which may be several bytes.
void dropLastCharacter(std::string& text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
    if (!text.empty()) text.pop_back();
}

}  // namespace

Pen::Pen(VSTGUI::CDrawContext& context) : context_(context) {
    scale_ = context.getCurrentTransform().m11 * context.getScaleFactor();
    if (!(scale_ > 0.0)) scale_ = 1.0;
    hair_ = std::max(1.0, std::round(scale_ * 0.75)) / scale_;
    context.setDrawMode(VSTGUI::kAntiAliasing | VSTGUI::kNonIntegralMode);
}

double Pen::snap(double position) const { return std::round(position * scale_) / scale_; }

Pen::Path Pen::newPath() { return VSTGUI::owned(context_.createGraphicsPath()); }

Pen::Path Pen::roundPath(double x, double y, double w, double h, const Corners& corners) {
    const Path path = newPath();
    const double right = x + w, bottom = y + h;
    path->beginSubpath(x + corners.leftTop, y);
    path->addLine(right - corners.rightTop, y);
    if (corners.rightTop > 0)
        path->addArc(around(right - corners.rightTop, y + corners.rightTop, corners.rightTop), 270, 360, true);
    path->addLine(right, bottom - corners.rightBottom);
    if (corners.rightBottom > 0)
        path->addArc(around(right - corners.rightBottom, bottom - corners.rightBottom, corners.rightBottom), 0, 90, true);
    path->addLine(x + corners.leftBottom, bottom);
    if (corners.leftBottom > 0)
        path->addArc(around(x + corners.leftBottom, bottom - corners.leftBottom, corners.leftBottom), 90, 180, true);
    path->addLine(x, y + corners.leftTop);
    if (corners.leftTop > 0) path->addArc(around(x + corners.leftTop, y + corners.leftTop, corners.leftTop), 180, 270, true);
    path->closeSubpath();
    return path;
}

Pen::Path Pen::pathOf(const Points& points, bool closed) {
    const Path path = newPath();
    if (points.empty()) return path;
    path->beginSubpath(points.front());
    for (std::size_t i = 1; i < points.size(); ++i) path->addLine(points[i]);
    if (closed) path->closeSubpath();
    return path;
}

void Pen::fill(const Path& path, const Color& color) {
    context_.setFillColor(color);
    context_.drawGraphicsPath(path, VSTGUI::CDrawContext::kPathFilled);
}

void Pen::stroke(const Path& path, const Color& color, double width, bool roundEnds, bool dashed) {
    static const CLineStyle butt(CLineStyle::kLineCapButt, CLineStyle::kLineJoinRound);
    static const CLineStyle roundCaps(CLineStyle::kLineCapRound, CLineStyle::kLineJoinRound);
    static const CLineStyle dashes(CLineStyle::kLineCapButt, CLineStyle::kLineJoinRound, 0, CLineStyle::CoordVector{2, 2});
    context_.setLineStyle(dashed ? dashes : roundEnds ? roundCaps : butt);
    context_.setLineWidth(width);
    context_.setFrameColor(color);
    context_.drawGraphicsPath(path, VSTGUI::CDrawContext::kPathStroked);
}

void Pen::rect(double x, double y, double w, double h, const Color& fillColor) {
    const double left = snap(x), top = snap(y);
    const Path path = newPath();  // the context's own rectangle is a unit too small, and blurred for it
    path->addRect({left, top, std::max(snap(x + w), left + 1 / scale_), std::max(snap(y + h), top + 1 / scale_)});
    fill(path, fillColor);
}

void Pen::round(double x, double y, double w, double h, const Corners& corners, const Color& fillColor) {
    const double left = snap(x), top = snap(y);
    fill(roundPath(left, top, snap(x + w) - left, snap(y + h) - top, corners), fillColor);
}

void Pen::roundLine(double x, double y, double w, double h, const Corners& corners, const Color& color, double width) {
    if (!(width > 0)) width = hair_;
    const double left = snap(x), top = snap(y), half = width / 2;
    const auto inner = [half](double r) { return std::max(0.0, r - half); };
    const Corners inside(inner(corners.leftTop), inner(corners.rightTop), inner(corners.rightBottom), inner(corners.leftBottom));
    stroke(roundPath(left + half, top + half, snap(x + w) - left - width, snap(y + h) - top - width, inside), color, width,
           false);
}

void Pen::dot(double x, double y, double r, const Color& fillColor) {
    const Path path = newPath();
    path->addEllipse(around(x, y, r));  // the context's own ellipse comes out of the wrong size
    fill(path, fillColor);
}

void Pen::verticalGradient(double x, double y, double w, double h, const Corners& corners, const Color& top,
                           const Color& bottom) {
    context_.fillLinearGradient(roundPath(snap(x), snap(y), snap(x + w) - snap(x), snap(y + h) - snap(y), corners),
                                *gradient(top, bottom), CPoint(0, y), CPoint(0, y + h));
}

void Pen::verticalGradientDot(double x, double y, double r, const Color& top, const Color& bottom) {
    const Path path = newPath();
    path->addEllipse(around(x, y, r));
    context_.fillLinearGradient(path, *gradient(top, bottom), CPoint(x, y - r), CPoint(x, y + r));
}

void Pen::glow(double x, double y, double r, const Color& color) {
    const Path path = newPath();
    path->addEllipse(around(x, y, r));
    Color outer = color;
    outer.alpha = 0;
    context_.fillRadialGradient(path, *gradient(color, outer), CPoint(x, y), r);
}

void Pen::arc(double x, double y, double r, double from, double to, const Color& color, double width, bool roundEnds) {
    if (to < from) std::swap(from, to);
    const Path path = newPath();
    path->addArc(around(x, y, r), degrees(from), degrees(to), true);
    stroke(path, color, width, roundEnds);
}

void Pen::line(const Points& points, const Color& color, double width, bool dashed) {
    stroke(pathOf(points, false), color, width, true, dashed);
}

void Pen::polygon(const Points& points, const Color& fillColor) { fill(pathOf(points, true), fillColor); }

void Pen::polygonLine(const Points& points, const Color& color, double width) {
    stroke(pathOf(points, true), color, width, true);
}

void Pen::bezier(Point from, Point control1, Point control2, Point to, const Color& color, double width) {
    const Path path = newPath();
    path->beginSubpath(from);
    path->addBezierCurve(control1, control2, to);
    stroke(path, color, width, true);
}

void Pen::pie(double x, double y, double r, double from, double to, const Color& fillColor) {
    constexpr int steps = 24;
    Points points{{x, y}};
    for (int i = 0; i <= steps; ++i) {
        const double angle = from + (to - from) * i / steps;
        points.emplace_back(x + r * std::cos(angle), y + r * std::sin(angle));
    }
    polygon(points, fillColor);
}

void Pen::filledCurve(const Points& points, double base, const Color& color, double cornerRadius) {
    if (points.size() < 2) return;
    double top = base, bottom = base;
    for (const Point& point : points) top = std::min(top, point.y), bottom = std::max(bottom, point.y);
    Points outline = points;
    const auto corner = [&](double x, double from) {
        const int steps = cornerRadius > 0 ? 8 : 1;
        for (int i = 0; i <= steps; ++i) {
            const double angle = from + std::numbers::pi / 2 * i / steps;
            outline.emplace_back(x + cornerRadius * std::cos(angle), base + cornerRadius * (std::sin(angle) - 1));
        }
    };
    corner(points.back().x - cornerRadius, 0);
    corner(points.front().x + cornerRadius, std::numbers::pi / 2);
    VSTGUI::GradientColorStopMap stops;
    const double height = std::max(bottom - top, 0.01);
    if (top < base - 1 && bottom > base + 1) {
        stops = {{0.0, fade(color, 0.42)}, {(base - top) / height, fade(color, 0.05)}, {1.0, fade(color, 0.42)}};
    } else if (bottom > base + 1) {
        stops = {{0.0, fade(color, 0.03)}, {1.0, fade(color, 0.42)}};
    } else {
        stops = {{0.0, fade(color, 0.42)}, {1.0, fade(color, 0.03)}};
    }
    const auto shade = VSTGUI::owned(CGradient::create(stops));
    context_.fillLinearGradient(pathOf(outline, true), *shade, CPoint(0, top), CPoint(0, top + height));
}

void Pen::chevron(double x, double y, Pointing pointing, double r, const Color& color, double width) {
    const double h = r / 2;
    Points points;
    switch (pointing) {
        case Pointing::down: points = {{x - r, y - h}, {x, y + h}, {x + r, y - h}}; break;
        case Pointing::up: points = {{x - r, y + h}, {x, y - h}, {x + r, y + h}}; break;
        case Pointing::right: points = {{x - h, y - r}, {x + h, y}, {x - h, y + r}}; break;
        case Pointing::left: points = {{x + h, y - r}, {x - h, y}, {x + h, y + r}}; break;
    }
    line(points, color, width);
}

void Pen::star(double x, double y, double r, const Color& color, bool filled) {
    Points points;
    for (int k = 0; k < 10; ++k) {
        const double radius = k % 2 == 0 ? r : r * 0.44, angle = -std::numbers::pi / 2 + k * std::numbers::pi / 5;
        points.emplace_back(x + radius * std::cos(angle), y + radius * std::sin(angle));
    }
    if (filled) {
        polygon(points, color);
    } else {
        polygonLine(points, color, 1.0);
    }
}

void Pen::power(double x, double y, double r, const Color& color) {
    constexpr double gap = 0.7, up = -std::numbers::pi / 2;
    arc(x, y, r, up + gap, up + 2 * std::numbers::pi - gap, color, 1.3, true);
    line({{x, y - r - 0.6}, {x, y - r * 0.1}}, color, 1.3);
}

void Pen::dots(double x, double y, const Color& color) {
    constexpr double pitch = 3.1;
    for (int column = 0; column < 2; ++column)
        for (int row = -1; row <= 1; ++row) dot(x + column * pitch, y + row * pitch, 0.95, color);
}

void Pen::tick(double x, double y, const Color& color) { line({{x - 4, y}, {x - 1, y + 3}, {x + 4.5, y - 3.5}}, color, 1.6); }

double Pen::textWidth(const std::string& text, style::Face face, double size) { return lettering::width(text, face, size); }

double Pen::text(double x, double y, const std::string& text, style::Face face, double size, const Color& color, Align align,
                 double maxWidth) {
    if (text.empty()) return 0;
    std::string shown = text;
    double width = textWidth(shown, face, size);
    if (maxWidth > 0 && width > maxWidth) {
        do {
            dropLastCharacter(shown);
            width = textWidth(shown + "...", face, size);
        } while (!shown.empty() && width > maxWidth);
        shown += "...";
    }
    if (align == Align::centre) x -= width / 2;
    if (align == Align::right) x -= width;
    // Most redraws are of a small part of the window.
    CRect clip;
    context_.getClipRect(clip);
    if (x > clip.right + size || x + width < clip.left - size || y < clip.top - size || y - 1.5 * size > clip.bottom)
        return width;
    lettering::draw(context_, x, snap(y), shown, face, size, color);
    return width;
}

Pen::Clip::Clip(Pen& pen, double x, double y, double w, double h) : context_(pen.context_) {
    context_.getClipRect(before_);
    CRect narrowed(pen.snap(x), pen.snap(y), pen.snap(x + w), pen.snap(y + h));
    narrowed.bound(before_);
    context_.setClipRect(narrowed);
}

Pen::Clip::~Clip() { context_.setClipRect(before_); }

Pen::WholePixels::WholePixels(Pen& pen) : context_(pen.context_) {
    context_.getClipRect(before_);
    constexpr double rounding = 1e-6;  // of the way from window units to pixels
    const auto outwards = [scale = pen.scale_](double low, double high) {
        return std::pair(std::floor(low * scale + rounding) / scale, std::ceil(high * scale - rounding) / scale);
    };
    const auto [left, right] = outwards(before_.left, before_.right);
    const auto [top, bottom] = outwards(before_.top, before_.bottom);
    context_.setClipRect({left, top, right, bottom});
}

Pen::WholePixels::~WholePixels() { context_.setClipRect(before_); }

}  // namespace vantoric

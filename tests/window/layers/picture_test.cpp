// Kept pictures show what drawing would have shown, to the pixel, at every zoom.
#include "editor/picture.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "editor/backdrop.h"
#include "editor/line_edit.h"
#include "layer_picture.h"

namespace vantoric {
namespace {

using VSTGUI::CRect;

constexpr double width = 120, height = 60;

void drawSample(Pen& pen, double x, double y) {
    pen.round(x - 10, y - 10, 20, 20, 4, style::raised);
    pen.arc(x, y, 8, 1, 5, style::filters, 2, true);
    pen.text(x, y + 3, "Ag", style::Face::medium, 9, style::text, Align::centre);
}

// The largest difference of a channel between two rows of pixels.
int difference(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
    int largest = a.size() == b.size() ? 0 : 256;
    for (std::size_t i = 0; i < a.size() && largest < 256; ++i)
        for (int shift = 0; shift < 32; shift += 8)
            largest = std::max(largest, std::abs(static_cast<int>(a[i] >> shift & 255) - static_cast<int>(b[i] >> shift & 255)));
    return largest;
}

struct KeptPictures : WithGui, ::testing::Test {};

TEST_F(KeptPictures, ShowWhatDrawingShows) {
    for (const double zoom : {0.75, 1.0, 1.5, 2.0, 4.5}) {
        const auto drawn = pixelsOf(zoom, width, height, [](VSTGUI::CDrawContext& context) {
            Pen pen(context);
            for (const double x : {20.0, 50.3, 81.5}) drawSample(pen, x, 30);
        });
        const auto shown = pixelsOf(zoom, width, height, [](VSTGUI::CDrawContext& context) {
            Pen pen(context);
            for (const double x : {20.0, 50.3, 81.5})
                showShared(pen, "sample", CRect(x - 12, 18, x + 12, 42), [&](Pen& picture) { drawSample(picture, x, 30); });
        });
        // Composing twice rounds once more.
        EXPECT_LE(difference(drawn, shown), 3) << "zoom " << zoom;
    }
}

TEST_F(KeptPictures, WhatIsSelectedInALineStaysWhileTheCaretBlinks) {
    LineEdit line;
    line.setText("0.5", true);
    const auto pixels = [&](bool isActive, bool hasCaret) {
        return pixelsOf(1, width, height, [&](VSTGUI::CDrawContext& context) {
            Pen pen(context);
            line.draw(pen, 20, 30, 60, style::Face::medium, 12, style::text, isActive, hasCaret);
        });
    };
    const auto ground = pixelsOf(1, width, height, [](VSTGUI::CDrawContext&) {});
    const auto besides = [&](const auto& picture) { return std::ranges::mismatch(picture, ground).in1 - picture.begin(); };
    const auto shown = pixels(true, true), hidden = pixels(true, false), left = pixels(false, true);
    EXPECT_NE(shown, hidden) << "the caret";
    EXPECT_EQ(besides(shown), besides(hidden)) << "the corner of the selection's ground";
    EXPECT_NE(besides(left), besides(hidden)) << "there is none in a line that is not typed in";
}

TEST_F(KeptPictures, AreDrawnOnceForAZoom) {
    Picture picture;
    int drawn = 0;
    const auto show = [&](double zoom) {
        pixelsOf(zoom, width, height, [&](VSTGUI::CDrawContext& context) {
            Pen pen(context);
            picture.show(pen, CRect(0, 0, 40, 40), [&](Pen&) { ++drawn; });
        });
    };
    show(1.5);
    show(1.5);
    EXPECT_EQ(drawn, 1);
    show(3.0);
    EXPECT_EQ(drawn, 2);
    picture.forget();
    show(3.0);
    EXPECT_EQ(drawn, 3);
}

// At 300 % the upper edge of a panel goes from ground to surface in one row of pixels, the lines drawn on it in whole ones.
TEST_F(KeptPictures, TheGroundIsCrispAtThreeTimesItsSize) {
    constexpr double zoom = 4.5, w = 1200, h = 200;
    const auto pixels = pixelsOf(zoom, w, h, [](VSTGUI::CDrawContext& context) {
        auto* backdrop = new Backdrop(CRect(0, 0, 1200, 660), [] {});
        backdrop->drawRect(&context, CRect(0, 0, w, h));
        backdrop->forget();
    });
    const auto row = static_cast<std::size_t>(w * zoom);
    const auto at = [&](double x, double y) { return pixels[static_cast<std::size_t>(y) * row + static_cast<std::size_t>(x)]; };
    const double x = 300 * zoom;  // across the panel of the first oscillator, clear of its corners
    int edges = 0;
    for (double y = 129 * zoom; y < 150 * zoom; ++y)
        if (at(x, y) != at(x, y - 1)) ++edges;
    EXPECT_EQ(edges, 2) << "ground, the light edge at the top, surface; nothing between them";
}

}  // namespace
}  // namespace vantoric

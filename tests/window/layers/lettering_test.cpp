// Text as it falls on pixels.
#include "editor/lettering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "editor/pen.h"
#include "layer_picture.h"

namespace vantoric {
namespace {

using style::Face;

constexpr double width = 200, height = 32;  // whole pixels at every zoom here
constexpr int fullChannel = 255;

struct DrawnText : WithGui, ::testing::Test {};

std::vector<std::uint32_t> pixelsOfText(const std::string& text, double size, double zoom, double x = 10) {
    return pixelsOf(zoom, width, height,
                    [&](VSTGUI::CDrawContext& context) { Pen(context).text(x, 20, text, Face::medium, size, style::white); });
}

// How much brighter than the ground each column of pixels is.
std::vector<double> columnsOf(const std::vector<std::uint32_t>& pixels, double zoom) {
    const auto columns = static_cast<std::size_t>(std::round(width * zoom));
    std::vector<double> light(columns);
    for (std::size_t i = 0; i < pixels.size(); ++i) light[i % columns] += static_cast<int>(pixels[i] & 255) - style::window.blue;
    return light;
}

// The middles, in pixels, of the letters in a line whose letters do not touch.
std::vector<double> middlesOf(const std::vector<double>& columns) {
    std::vector<double> middles;
    double weight = 0, moment = 0;
    for (std::size_t x = 0; x < columns.size(); ++x) {
        if (columns[x] > 0) {
            weight += columns[x];
            moment += columns[x] * (static_cast<double>(x) + 0.5);
        } else if (weight > 0) {
            middles.push_back(moment / weight);
            weight = moment = 0;
        }
    }
    return middles;
}

TEST_F(DrawnText, HasEvenDistancesAtEveryZoom) {
    for (const double zoom : {0.75, 1.0, 1.25, 1.5, 4.5}) {
        for (const double size : {8.5, 9.0, 9.5, 10.0}) {
            const auto middles = middlesOf(columnsOf(pixelsOfText("o o o o o o o o o o", size, zoom), zoom));
            ASSERT_EQ(middles.size(), 10u) << "zoom " << zoom << ", size " << size;
            const double distance = (middles.back() - middles.front()) / 9;
            for (std::size_t i = 1; i < middles.size(); ++i)
                EXPECT_NEAR(middles[i] - middles[i - 1], distance, 0.1) << "zoom " << zoom << ", size " << size << ", " << i;
            EXPECT_NEAR(distance, lettering::width("o ", Face::medium, size) * zoom, 0.1);
        }
    }
}

TEST_F(DrawnText, BeginsWhereItShouldToAQuarterOfAPixel) {
    constexpr double zoom = 0.75;
    const double first = middlesOf(columnsOf(pixelsOfText("o", 10, zoom), zoom)).at(0);
    for (double x = 10.1; x < 12; x += 0.1)
        EXPECT_NEAR(middlesOf(columnsOf(pixelsOfText("o", 10, zoom, x), zoom)).at(0), first + (x - 10) * zoom, 0.17);
}

TEST_F(DrawnText, HasItsColourAndNoneBesideItsLetters) {
    const auto pixels = pixelsOfText("I", 20, 4.5);
    const auto brightest = *std::max_element(pixels.begin(), pixels.end());
    EXPECT_EQ(brightest & 0xFFFFFF, 0xFFFFFFu);
    const double half = 0.5 * fullChannel * 20 * 4.5;  // the letter is higher than half its size
    const auto columns = columnsOf(pixels, 4.5);
    EXPECT_GT(*std::max_element(columns.begin(), columns.end()), half);
    EXPECT_GT(std::count(columns.begin(), columns.end(), 0.0), static_cast<std::ptrdiff_t>(columns.size()) - 20);
}

// Whatever a user writes: the font knows arrows and signs that it would put in place of some.
TEST_F(DrawnText, StandsAsItWasWritten) {
    constexpr double size = 10;
    const auto widthOf = [](const std::string& text) { return lettering::width(text, Face::medium, size); };
    for (const char* text : {"->",    "<-",      "<->", "-->", "=>",  "<=", ">=",  "!=",  "|-",  "2x3",
                             "2 x 3", "10 x 20", "*",   "--",  "(-)", "fi", "ffl", "X-Y", "3:4", "A@B"}) {
        // Letters that keep off each other have no pair of which the font makes another; only their distances may be closer.
        std::string apart, bare = text;
        for (const char letter : bare) apart += std::string(apart.empty() ? "" : "\u200c") + letter;
        EXPECT_NEAR(widthOf(text), widthOf(apart), 0.5) << text;
        const auto drawn = pixelsOfText(text, size, 4.5), wanted = pixelsOfText(apart, size, 4.5);
        double light = 0, wantedLight = 0;
        for (const double column : columnsOf(drawn, 4.5)) light += column;
        for (const double column : columnsOf(wanted, 4.5)) wantedLight += column;
        EXPECT_NEAR(light, wantedLight, 0.02 * wantedLight) << text << " has other letters";
    }
}

TEST_F(DrawnText, ShowsWhatNoFontHasAndLinesOfAnyLength) {
    for (const std::string& text :
         {std::string("\U000F1234"), std::string("\U0001F3B9"), std::string("\xff\xfe"), std::string(6000, 'm')}) {
        const auto columns = columnsOf(pixelsOfText(text, 10, 4.5), 4.5);
        EXPECT_TRUE(std::any_of(columns.begin(), columns.end(), [](double light) { return light > 0; })) << text.substr(0, 8);
    }
}

}  // namespace
}  // namespace vantoric

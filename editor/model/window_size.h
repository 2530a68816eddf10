// The size of the window: which there are, which one is in force, and how it is kept and chosen.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "parameters/label_lists.h"
#include "platform/dialogs.h"

namespace vantoric {

struct SizeRow {
    const char* label;
    int width, height;  // of the frame before zoom
    double zoom;
};

// The size of index 0 to 17, held to that. Any thread.
const SizeRow& sizeRow(int index);

// The labels of all sizes: the rows of the menu. Any thread.
LabelList sizeLabels();

// The zoom of a size as the window uses it: the exact value that the table's rounded one stands for. Any thread.
double zoomOfSize(int index);

struct Screen {
    int width = 0, height = 0;  // of the primary one in pixels; 0 if none is known
};

// On the thread of the window.
class WindowSize {
public:
    // The host's product string decides some rules. The small size is in force.
    WindowSize(platform::Dialogs& dialogs, std::string_view hostProduct);

    // The size for a start: the stored one, or else the one for the screen.
    void loadSize(Screen screen);

    // Takes a size, 0 to 17 (held to that), or what the host allows in its place.
    void applySize(int index);

    // Stores and takes a size that the user chose, after what there is to tell and to ask. `then` is called once it is in
    // force, with whether the zoom is another; it is not called if the user refuses.
    void chooseSize(int index, Screen screen, std::function<void(bool zoomChanged)> then);

    int sizeIndex() const { return sizeIndex_; }
    int width() const { return sizeRow(sizeIndex_).width; }    // of the frame before zoom
    int height() const { return sizeRow(sizeIndex_).height; }  // likewise
    double zoom() const { return zoomOfSize(sizeIndex_); }
    int percent() const;                                            // of the normal layout, as the labels count
    bool largeSkin() const;                                         // the normal layout, not the small one
    double layoutScale() const { return largeSkin() ? 1.5 : 1.0; }  // pixels before zoom for a unit of the layout
    int bitmapOffset() const { return largeSkin() ? 30 : 0; }       // added to the number of every bitmap

private:
    bool isForbidden(int index) const;
    void takeSize(int index, const std::function<void(bool)>& then);

    platform::Dialogs& dialogs_;
    std::string hostProduct_;
    int sizeIndex_ = 0;
};

}  // namespace vantoric

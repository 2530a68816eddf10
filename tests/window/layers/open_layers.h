// A window that has nothing but layers.
#pragma once

#include <vector>

#include "editor/layer_view.h"

namespace vantoric {

class OpenLayers final : public LayerHost {
public:
    OpenLayers(double width, double height) : area_(0, 0, width, height) {}

    void openLayer(LayerView* view) override { views_.push_back(VSTGUI::owned(view)); }
    void closeLayer(LayerView& view) override {
        std::erase_if(views_, [&](const auto& each) { return each.get() == &view; });
    }
    VSTGUI::CRect layerArea() const override { return area_; }

    int count() const { return static_cast<int>(views_.size()); }
    LayerView& top() { return *views_.back(); }

private:
    VSTGUI::CRect area_;
    std::vector<VSTGUI::SharedPointer<LayerView>> views_;
};

}  // namespace vantoric

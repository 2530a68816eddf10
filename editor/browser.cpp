#include "editor/browser.h"

#include <utility>

#include "editor/model/control_table.h"
#include "editor/notes_box.h"

namespace vantoric {

MYBrowser::MYBrowser(VSTGUI::IControlListener* listener) : CControl(VSTGUI::CRect(0, 0, 0, 0), listener, browserTag) {
    setTransparency(true);
    setMouseEnabled(false);
}

MYBrowser::~MYBrowser() noexcept {
    if (auto* view = std::exchange(view_, nullptr)) host_->closeLayer(*view);
}

bool MYBrowser::open(LayerHost& host, BrowserModel* model) {
    constexpr double lowest = 300;  // below the band
    if (isOpen()) return true;
    VSTGUI::CRect area = host.layerArea();
    area.top += bandHeight;
    if (model == nullptr || area.getHeight() < lowest) return false;
    host_ = &host;
    model_ = model;
    view_ = new BrowserView(area, *model, [this] { close(); });
    view_->setNotesWanted([&host, model](const BrowserPatch& patch) { openNotes(host, *model, patch); });
    host.openLayer(view_);
    tellListener();
    return true;
}

void MYBrowser::close() {
    auto* view = std::exchange(view_, nullptr);
    if (view == nullptr) return;
    host_->closeLayer(*view);
    model_->close();
    tellListener();
}

void MYBrowser::tellListener() {
    setValue(isOpen() ? 1.0f : 0.0f);
    if (getListener() != nullptr) valueChanged();
}

void MYBrowser::draw(VSTGUI::CDrawContext*) { setDirty(false); }

}  // namespace vantoric

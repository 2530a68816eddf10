// `MYBrowser`: the patch browser as a control of the window.
#pragma once

#include "editor/browser_view.h"
#include "vstgui/lib/controls/ccontrol.h"

namespace vantoric {

// The control itself shows nothing: it owns the view that lies over the window while the browser is open. Its value is 1 then.
class MYBrowser : public VSTGUI::CControl {
public:
    static constexpr int browserTag = 1281;  // "OPEN PATCH BROWSER"

    explicit MYBrowser(VSTGUI::IControlListener* listener);
    ~MYBrowser() noexcept override;

    // Opens below the band. It stays closed without a model, or in a window that has nothing but the band; false then.
    bool open(LayerHost& host, BrowserModel* model);
    void close();
    bool isOpen() const { return view_ != nullptr; }
    BrowserView* view() const { return view_; }

    void draw(VSTGUI::CDrawContext* context) override;

    CLASS_METHODS_NOCOPY(MYBrowser, VSTGUI::CControl)

private:
    void tellListener();

    LayerHost* host_ = nullptr;
    BrowserModel* model_ = nullptr;
    BrowserView* view_ = nullptr;
};

}  // namespace vantoric

#include "faces/common/face_window.h"

#include "editor/editor_window.h"
#include "editor/model/window_files.h"
#include "faces/common/host_calls.h"

namespace vantoric {
namespace {

VSTGUI::KeyboardEvent eventOf(const FaceWindow::Key& key) {
    VSTGUI::KeyboardEvent event;
    event.type = VSTGUI::EventType::KeyDown;
    event.character = key.character;
    event.virt = static_cast<VSTGUI::VirtualKey>(key.number);
    if (key.shift) event.modifiers.add(VSTGUI::ModifierKey::Shift);
    if (key.alt) event.modifiers.add(VSTGUI::ModifierKey::Alt);
    if (key.control) event.modifiers.add(VSTGUI::ModifierKey::Control);
    return event;
}

class EditorFaceWindow final : public FaceWindow {
public:
    EditorFaceWindow(PluggedInstrument& plugged, const std::string& hostProduct)
        : window_(plugged.instrument(), plugged.programs(), hostProduct) {}

    Size size() const override {
        const EditorWindow::Size size = window_.size();
        return {size.width, size.height};
    }
    bool open(std::uintptr_t parent) override {
        return guarded(
            [&] {
                window_.close();
                return window_.open(parent);
            },
            false);
    }
    void close() override {
        guarded([&] { return window_.close(), true; }, false);
    }
    void show(bool isShown) override {
        guarded([&] { return window_.show(isShown), true; }, false);
    }
    bool isOpen() const override { return window_.isOpen(); }
    std::uintptr_t ownWindow() const override { return window_.ownWindow(); }
    void idle() override {
        guarded([&] { return window_.idle(), true; }, false);
    }
    bool onKeyDown(const Key& key) override {
        return guarded(
            [&] {
                VSTGUI::KeyboardEvent event = eventOf(key);
                return window_.onHostKey(event);
            },
            false);
    }

private:
    EditorWindow window_;
};

}  // namespace

std::unique_ptr<FaceWindow> makeFaceWindow(PluggedInstrument& plugged, const std::string& hostProduct) {
    if (hideEditorRequested()) return nullptr;
    return std::make_unique<EditorFaceWindow>(plugged, hostProduct);
}

}  // namespace vantoric

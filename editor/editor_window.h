// The window of an instrument, whatever it is plugged into: a face opens it in its host's window and calls `idle`.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "editor/browser.h"
#include "editor/browser_library.h"
#include "editor/frame_dialogs.h"
#include "editor/holder_window.h"
#include "editor/model/q7editor.h"
#include "editor/model/work_history.h"
#include "editor/window_content.h"
#include "library/patch_index.h"
#include "library/program_loader.h"
#include "vstgui/lib/cframe.h"
#include "vstgui/lib/controls/icontrollistener.h"

namespace vantoric {

// On the host's one thread for windows throughout; `idle` and `onHostKey` on another do nothing. It lives as long as the plug-in,
// with or without an open window.
class EditorWindow final : private EditorView,
                           private VSTGUI::VSTGUIEditorInterface,
                           private VSTGUI::IKeyboardHook,
                           private VSTGUI::IControlListener {
public:
    // The instrument outlives it. The host's product string decides some rules of size.
    EditorWindow(Instrument& instrument, ProgramLoader& programs, const std::string& hostProduct);
    ~EditorWindow() override;
    EditorWindow(const EditorWindow&) = delete;
    EditorWindow& operator=(const EditorWindow&) = delete;

    struct Size {
        int width, height;
    };
    // In pixels, for the size in force. May be asked before the window is open.
    Size size() const;
    // A size, 0 to 17, for a start where none is stored. Before the window is open.
    void startWithSize(int index) { editor_.startWithSize(index); }
    // For a host whose own window plays notes by keys: after a click on nothing but the ground they go on coming in there, and
    // those that play none are handed over by `onHostKey`.
    void leaveGroundKeysToHost() { areGroundKeysHosts_ = true; }
    // Pixels a unit of the window's layout, for what is drawn beside it.
    double scale() const;

    // Builds the window inside the host's X11 window `parent`. False, with nothing done, if it is open, `parent` is 0, or
    // there is no display. Nothing of it is left where short memory throws.
    bool open(std::uintptr_t parent);
    // A host may call it from within a call that the window makes to it: it is closed then once that has returned.
    void close();
    bool isOpen() const { return frame != nullptr && !isCloseWanted_; }
    // Takes an open window off the screen, or puts it back.
    void show(bool isShown) {
        if (holder_) holder_->show(isShown);
    }
    // The X11 id of the window inside the host's; 0 while it is closed.
    std::uintptr_t ownWindow() const { return holder_ ? holder_->id() : 0; }
    // The host's regular call, some twenty times a second or more: events, timers, what has changed.
    void idle();
    // A key of the host's own window; true if it was used.
    bool onHostKey(VSTGUI::KeyboardEvent& event);

private:
    // A call in which views may be at work: they outlive it.
    class Inside {
    public:
        explicit Inside(EditorWindow& window) : window_(window) { ++window_.inside_; }
        ~Inside();
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

    private:
        EditorWindow& window_;
    };

    void redrawControl(int index) override { content_->redrawControl(index); }
    void redrawPart(WindowPart part) override { content_->redrawPart(part); }
    void redrawAll() override { content_->redrawAll(); }
    void showPages() override { content_->showPages(); }
    void rebuild() override;
    void setZoom(double zoom) override;
    Screen screen() const override;
    void toggleBrowser() override;
    void openBrowser() override;
    void openMenu(int index) override { content_->openMenu(index); }
    void showPatchName() override { content_->redrawPart(WindowPart::PatchList); }
    void showHint(const std::string& text) override { content_->showHint(text); }
    void showCredits() override;

    bool beforeSizeChange(const VSTGUI::CRect& newSize, const VSTGUI::CRect& oldSize) override;
    std::int32_t getKnobMode() const override { return VSTGUI::kLinearMode; }
    void onKeyboardEvent(VSTGUI::KeyboardEvent& event, VSTGUI::CFrame* frame) override;

    void valueChanged(VSTGUI::CControl* browser) override;

    bool build(std::uintptr_t parent);
    bool isOwnKey(const VSTGUI::KeyboardEvent& event) const;
    void closeNow();
    bool openPatchNotes();
    bool buildFrame();
    void offerRecovery();
    void notePlayed();
    void takeFrameDown();
    void runLater(std::function<void()> job) { later_.push_back(std::move(job)); }

    Instrument& instrument_;
    FrameDialogs dialogs_;
    Q7Editor editor_;
    WorkHistory work_;
    std::unique_ptr<PatchIndex> index_;  // while a window is open
    std::unique_ptr<BrowserLibrary> browserModel_;
    ProgramLoader& programs_;  // follows program changes while no window is open
    std::uintptr_t parent_ = 0;
    std::unique_ptr<HolderWindow> holder_;
    std::unique_ptr<WindowContent> content_;
    MYBrowser* browser_ = nullptr;
    std::vector<std::function<void()>> later_;  // run in idle time, outside every event
    std::uint64_t lastRound_ = 0;
    std::uint32_t loadsNoted_ = 0;
    unsigned filesNoted_ = 0;
    PatchPlace placeNoted_;
    std::thread::id thread_;  // that opened the window
    int inside_ = 0;          // calls in which views may be at work
    bool isCloseWanted_ = false;
    bool hasOffered_ = false;  // what a crash left
    bool isClosing_ = false;
    bool areGroundKeysHosts_ = false;
};

}  // namespace vantoric

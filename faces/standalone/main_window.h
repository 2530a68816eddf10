// The program's window: the editor, below it the bar and the keys, above these the settings when they are wanted.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "editor/editor_window.h"
#include "faces/standalone/child_frame.h"
#include "faces/standalone/keys_view.h"
#include "faces/standalone/settings_panel.h"
#include "faces/standalone/standalone.h"
#include "faces/standalone/strip_bar.h"
#include "faces/standalone/top_window.h"

namespace vantoric::standalone {

// On the program's main thread. The parts lie side by side in one window of the desktop, each a frame of the window library:
// the editor builds its frame anew at every change of size, and knows nothing of what is around it.
class MainWindow final : private WindowListener {
public:
    // Both outlive it. What the user sets is written into the settings.
    MainWindow(Standalone& program, KeptSettings& settings);
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    static bool hasDisplay() { return TopWindow::hasDisplay(); }
    // False if there is no display.
    bool open();
    // Until the user closes it, or the display goes.
    bool isOpen() const { return isOpen_ && !top_.isLost(); }
    bool isLost() const { return top_.isLost(); }
    // Serves events and draws; waits for them some milliseconds at most.
    void runOnce();

private:
    static constexpr double barHeight = 32, keysHeight = 86, wholeWidth = 1200;
    // Pixels of the screen's height that are the desktop's own: with room to spare, and a panel and a title at least.
    static constexpr int desktopBars = 100, leastDesktopBars = 72;
    static constexpr double newsFor = 8;       // seconds that a text stands
    static constexpr double lookEvery = 0.05;  // seconds between two rounds
    static constexpr double devicesEvery = 2;  // seconds, while the panel is open
    static constexpr double tipAfter = 0.8;    // seconds that the pointer rests

    void keyDown(const WindowKey& key) override;
    void keyUp(const WindowKey& key) override;
    void focusLost() override { program_.hands().releaseCodesBut({}); }
    void closeWanted() override { isOpen_ = false; }

    double zoom() const { return editor_.scale(); }
    // Window units across.
    double width() const { return editor_.size().width / zoom(); }
    int pixels(double units) const;
    int stripPixels() const;
    bool isPanelBelow() const;
    void fitTop();
    int startSize() const;
    bool keysFit() const;
    bool handOverKey(const WindowKey& key);
    bool isCommandKey(const WindowKey& key);
    void layOut();
    void openStrip();
    void openPanel();
    void closePanel();
    void look();
    void showBar();
    void tell(const std::string& news);
    void showPanel();
    void showTitle();
    void followTip();
    void openTip(StripBar::Part part);
    void putTipOff();
    void pressed(StripBar::Part part);
    void choose(const SoundChoice& choice);

    Standalone& program_;
    KeptSettings& settings_;
    TopWindow top_;
    EditorWindow editor_;
    ChildFrame strip_, panel_, tip_;
    StripBar* bar_ = nullptr;  // the frames own the views
    KeysView* keys_ = nullptr;
    SettingsPanel* settingsPanel_ = nullptr;
    std::vector<AlsaName> devices_;
    std::string news_, title_;
    double newsUntil_ = 0, lastLook_ = 0, lastDevices_ = 0;
    StripBar::Part tipPart_ = StripBar::Part::none;  // that the pointer is over
    double tipAt_ = 0;                               // when its tooltip is due
    bool showsTips_ = true;
    bool isOpen_ = false, layoutWanted_ = false, panelToggleWanted_ = false, areKeysShown_ = true;
};

}  // namespace vantoric::standalone

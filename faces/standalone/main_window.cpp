#include "faces/standalone/main_window.h"

#include <X11/keysym.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "editor/add_view.h"
#include "editor/gui_module.h"
#include "editor/model/window_files.h"
#include "faces/standalone/bar_tip.h"

namespace vantoric::standalone {

using VSTGUI::CRect;
using Part = StripBar::Part;

MainWindow::MainWindow(Standalone& program, KeptSettings& settings)
    : program_(program),
      settings_(settings),
      top_(*this),
      editor_(program.instrument(), program.programs(), "Glaigail"),  // as a host that grants every size at once
      areKeysShown_(settings.showsKeys) {
    // The editor asks when it changes its size, from within its idle call.
    program_.setSizeWish([this](int, int) { return layoutWanted_ = true; });
    editor_.leaveGroundKeysToHost();
}

MainWindow::~MainWindow() {
    program_.setSizeWish(nullptr);
    program_.setBoxesShown(false);
    tip_.close();
    panel_.close();
    strip_.close();
    editor_.close();
}

bool MainWindow::open() {
    editor_.startWithSize(startSize());
    const EditorWindow::Size size = editor_.size();
    if (!top_.open(size.width, size.height + stripPixels())) return false;
    if (areKeysShown_ && !keysFit()) {
        areKeysShown_ = false;
        tell("The keys do not fit on the screen below this size: \"Editor\" has smaller ones.");
    }
    fitTop();
    if (!editor_.open(top_.id())) return false;
    openStrip();
    showsTips_ = !tooltipsHidden();
    return isOpen_ = true;
}

// ---- layout -------------------------------------------------------------------------------------------------

int MainWindow::pixels(double units) const { return static_cast<int>(std::lround(units * zoom())); }

int MainWindow::stripPixels() const { return pixels(barHeight + (areKeysShown_ ? keysHeight : 0)); }

// The settings lie over the editor, or below everything where that is too low for them.
bool MainWindow::isPanelBelow() const { return editor_.size().height < pixels(SettingsPanel::height); }

void MainWindow::fitTop() {
    const EditorWindow::Size size = editor_.size();
    const int below = panel_.isOpen() && isPanelBelow() ? pixels(SettingsPanel::height) : 0;
    top_.resize(size.width, size.height + stripPixels() + below);
}

// The largest size of the whole editor that leaves room for all parts. Where its letters would be too small to be read, one for
// which the keys are folded away; where that has no room either, whatever has.
int MainWindow::startSize() const {
    const TopWindow::Size screen = TopWindow::screen();
    const auto across = [](int index) { return sizeRow(index).width * zoomOfSize(index); };
    const auto fits = [&](int index, double unitsBelow, int bars) {
        const double high = sizeRow(index).height * zoomOfSize(index) + unitsBelow * across(index) / wholeWidth;
        return across(index) <= screen.width && high + bars <= screen.height;
    };
    int smallest = -1, withKeys = -1, withBar = -1;
    const auto takeLarger = [&](int& best, int index) {
        if (best < 0 || across(index) > across(best)) best = index;
    };
    for (int index = 0; index < editorSizeCount; ++index) {
        const SizeRow& row = sizeRow(index);
        if (row.height * 2 <= row.width) continue;  // with something hidden
        if (smallest < 0 || across(index) < across(smallest)) smallest = index;
        if (fits(index, barHeight + keysHeight, desktopBars)) takeLarger(withKeys, index);
        if (fits(index, barHeight, leastDesktopBars)) takeLarger(withBar, index);
    }
    const auto isReadable = [&](int index) { return index >= 0 && across(index) >= wholeWidth; };
    if (!isReadable(withKeys) && isReadable(withBar)) return withBar;
    return withKeys >= 0 ? withKeys : smallest;
}

bool MainWindow::keysFit() const { return editor_.size().height + stripPixels() + desktopBars <= top_.screen().height; }

void MainWindow::layOut() {
    closePanel();
    openStrip();
}

void MainWindow::openStrip() {
    const EditorWindow::Size size = editor_.size();
    bar_ = nullptr;
    keys_ = nullptr;
    tip_.close();
    VSTGUI::CFrame* const frame = strip_.open(top_.id(), {0, size.height, size.width, stripPixels()}, zoom());
    if (frame == nullptr) return;
    bar_ = addView(*frame, new StripBar(
                               CRect(0, 0, width(), barHeight), [this](Part part) { pressed(part); },
                               [this](double tempo) { program_.player().setTempo(std::clamp(tempo, 20.0, 300.0)); }));
    if (areKeysShown_) {
        keys_ = addView(*frame, new KeysView(CRect(12, barHeight, width() - 12, barHeight + keysHeight - 8), program_.hands(),
                                             program_.player(), [this](unsigned code) { return top_.signOf(code); }));
    }
    showBar();
}

// At the bar's right end.
void MainWindow::openPanel() {
    const EditorWindow::Size size = editor_.size();
    const int across = pixels(SettingsPanel::width), high = pixels(SettingsPanel::height);
    const int top = isPanelBelow() ? size.height + stripPixels() : size.height - high;
    VSTGUI::CFrame* const frame = panel_.open(top_.id(), {size.width - across - pixels(12), top, across, high}, zoom());
    fitTop();
    if (frame == nullptr) return;
    SettingsPanel::Told told;
    told.chosen = [this](const SoundChoice& choice) { choose(choice); };
    told.inputWanted = [this](const std::string& name, bool wanted) {
        program_.midi().setWanted(name, wanted);
        program_.midi().poll(program_.sound().midi());
    };
    told.closeWanted = [this] { panelToggleWanted_ = true; };  // not from within its own event
    settingsPanel_ =
        addView(*frame, new SettingsPanel(CRect(0, 0, SettingsPanel::width, SettingsPanel::height), std::move(told)));
    lastDevices_ = 0;
    showPanel();
}

void MainWindow::closePanel() {
    settingsPanel_ = nullptr;
    panel_.close();
    fitTop();
}

// ---- what the user does -------------------------------------------------------------------------------------

void MainWindow::pressed(Part part) {
    Hands& hands = program_.hands();
    putTipOff();
    switch (part) {
        case Part::record:
            program_.toggleRecording();
            if (program_.recorder().isRecording()) tell("");  // what became of the last one is over
            break;
        case Part::keys:
            settings_.showsKeys = areKeysShown_ = !areKeysShown_;
            layoutWanted_ = true;  // not from within an event of the strip's own
            return;
        case Part::octaveDown: hands.shiftOctave(-1); break;
        case Part::octaveUp: hands.shiftOctave(1); break;
        case Part::pedal: hands.setPedal(!hands.isPedalDown()); break;
        case Part::panic: hands.panic(); break;
        case Part::dropouts: program_.player().forgetDropouts(); break;
        case Part::sound: panelToggleWanted_ = true; return;
        default: return;
    }
    showBar();
}

void MainWindow::choose(const SoundChoice& choice) {
    // What the options chose for this start stays theirs.
    const SoundChoice before = program_.sound().choice();
    if (choice.kind != before.kind) settings_.sound.kind = choice.kind;
    if (choice.device != before.device) settings_.sound.device = choice.device;
    if (choice.rate != before.rate) settings_.sound.rate = choice.rate;
    if (choice.period != before.period) settings_.sound.period = choice.period;
    program_.sound().open(choice);
    program_.midi().poll(program_.sound().midi());
    showPanel();
    showBar();
}

// Keys that the editor wants of a host: Tab, those of its history, and after a click on its ground all that play no note.
bool MainWindow::handOverKey(const WindowKey& key) {
    VSTGUI::KeyboardEvent event;
    event.type = VSTGUI::EventType::KeyDown;
    const bool isPlaying = !key.isControl && !key.isAlt && program_.hands().noteOf(key.code) >= 0;
    if (key.symbol == XK_Tab || key.symbol == XK_ISO_Left_Tab) event.virt = VSTGUI::VirtualKey::Tab;
    if (key.symbol == XK_F10) event.virt = VSTGUI::VirtualKey::F10;
    if (key.symbol > XK_space && key.symbol < 128 && !isPlaying) event.character = static_cast<char32_t>(key.symbol);
    const bool isMenuKey = key.symbol == XK_Menu;  // the window library has no name for it
    if (event.virt == VSTGUI::VirtualKey::None && event.character == 0 && !isMenuKey) return false;
    if (key.isShift) event.modifiers.add(VSTGUI::ModifierKey::Shift);
    if (key.isControl) event.modifiers.add(VSTGUI::ModifierKey::Control);
    if (key.isAlt) event.modifiers.add(VSTGUI::ModifierKey::Alt);
    return editor_.onHostKey(event);
}

bool MainWindow::isCommandKey(const WindowKey& key) {
    Hands& hands = program_.hands();
    switch (key.symbol) {
        case XK_Page_Up: return hands.shiftOctave(1), true;
        case XK_Page_Down: return hands.shiftOctave(-1), true;
        case XK_space: return hands.pedalCodeDown(key.code), true;
        case XK_Escape:
            if (panel_.isOpen()) return panelToggleWanted_ = true;
            return hands.panic(), true;
        default: return false;
    }
}

void MainWindow::keyDown(const WindowKey& key) {
    if (handOverKey(key) || key.isControl || key.isAlt) return;
    if (!isCommandKey(key) && !key.isRepeated) program_.hands().codeDown(key.code);
}

void MainWindow::keyUp(const WindowKey& key) { program_.hands().codeUp(key.code); }

// Some seconds long, in the bar.
void MainWindow::tell(const std::string& news) {
    news_ = news;
    newsUntil_ = clockSeconds() + newsFor;
}

// ---- what is shown ------------------------------------------------------------------------------------------

void MainWindow::showBar() {
    if (bar_ == nullptr) return;
    const Player& player = program_.player();
    const SoundSystem& sound = program_.sound();
    StripBar::Shown shown;
    shown.isRecording = program_.recorder().isRecording();
    shown.recordedSeconds = static_cast<int>(program_.recorder().seconds());
    shown.areKeysShown = areKeysShown_;
    shown.isPedalDown = program_.hands().isPedalDown();
    shown.octave = program_.hands().octave();
    shown.tempo = player.tempo();
    shown.load = static_cast<int>(std::lround(100 * std::min(player.load(), 9.99)));
    shown.dropouts = player.newDropouts();
    shown.isHeard = sound.isHeard();
    shown.isPanelOpen = panel_.isOpen();
    shown.news = clockSeconds() < newsUntil_ ? news_ : "";
    shown.sound = sound.isHeard() ? sound.system() + ", " + kilohertzText(player.rate()) + ", " + std::to_string(sound.period())
                                  : "No sound";
    bar_->show(shown);
}

void MainWindow::showPanel() {
    if (settingsPanel_ == nullptr) return;
    if (clockSeconds() - lastDevices_ > devicesEvery) {
        devices_ = alsaDevices();
        lastDevices_ = clockSeconds();
    }
    const SoundSystem& sound = program_.sound();
    SettingsPanel::Shown shown;
    shown.choice = sound.choice();
    bool isListed = false;
    for (const AlsaName& device : devices_) {
        shown.devices.emplace_back(device.name, device.description);
        isListed = isListed || device.name == shown.choice.device;
    }
    if (!isListed)
        shown.devices.emplace(shown.devices.begin(), shown.choice.device,
                              shown.choice.device == "default" ? "What the system chooses" : "");
    shown.system = sound.system();
    shown.rate = static_cast<int>(program_.player().rate());
    shown.period = sound.period();
    shown.priority = sound.priority();
    shown.problem = sound.problem();
    shown.hasMidi = program_.midi().isThere();
    shown.midi = shown.hasMidi ? program_.midi().description() : "No ALSA sequencer";
    for (const MidiInput& input : program_.midi().inputs())
        shown.inputs.push_back({input.name, program_.midi().isWanted(input.name)});
    settingsPanel_->show(shown);
}

void MainWindow::showTitle() {
    const std::string name = program_.instrument().program().getProgramName();
    const std::string title = name.empty() ? "Vantoric" : name + " - Vantoric";
    if (std::exchange(title_, title) != title) top_.setTitle(title);
}

void MainWindow::followTip() {
    if (bar_ == nullptr || !showsTips_) return;
    if (const Part part = bar_->hovered(); part != tipPart_) {
        tip_.close();
        tipPart_ = part;
        tipAt_ = clockSeconds() + tipAfter;
    }
    if (!tip_.isOpen() && clockSeconds() >= tipAt_) openTip(tipPart_);
}

// Above the part, within the window.
void MainWindow::openTip(Part part) {
    const std::string text = StripBar::tooltip(part);
    if (text.empty()) return;
    const VSTGUI::SharedPointer<BarTip> tip = VSTGUI::owned(new BarTip(text));
    const VSTGUI::CCoord across = tip->getWidth(), high = tip->getHeight();
    const double left = std::clamp(bar_->place(part).getCenter().x - across / 2, 4.0, std::max(4.0, width() - across - 4));
    const int top = editor_.size().height - pixels(high + 4);
    VSTGUI::CFrame* const frame = tip_.open(top_.id(), {pixels(left), top, pixels(across), pixels(high)}, zoom());
    if (frame == nullptr) return;
    tip->remember();  // the frame's share
    addView(*frame, tip.get());
}

// Until the pointer comes again.
void MainWindow::putTipOff() {
    tip_.close();
    tipAt_ = std::numeric_limits<double>::infinity();
}

void MainWindow::look() {
    program_.poll();
    if (const std::string news = program_.takeNews(); !news.empty()) tell(news);
    if (program_.hands().isAnyCodeDown()) program_.hands().releaseCodesBut(top_.codesDown());
    showBar();
    showPanel();
    showTitle();
    followTip();
}

void MainWindow::runOnce() {
    constexpr int atMost = 12;  // milliseconds
    top_.wait(xcb_get_file_descriptor(GuiModule::shared().connection()), atMost);
    top_.service();
    if (!isOpen()) return;
    if (clockSeconds() - lastLook_ >= lookEvery) {
        lastLook_ = clockSeconds();
        look();
    }
    if (keys_ != nullptr) keys_->follow();
    strip_.idle();
    panel_.idle();
    tip_.idle();
    editor_.idle();  // serves the events of all frames
    if (std::exchange(panelToggleWanted_, false)) panel_.isOpen() ? closePanel() : openPanel();
    if (std::exchange(layoutWanted_, false)) layOut();
}

}  // namespace vantoric::standalone

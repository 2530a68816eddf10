#include "editor/editor_window.h"

#include <algorithm>
#include <cmath>

#include "base/version.h"
#include "editor/add_view.h"
#include "editor/credits_view.h"
#include "editor/gui_module.h"
#include "editor/notes_box.h"
#include "library/show_messages.h"
#include "platform/dialogs.h"
#include "platform/module_folder.h"
#include "vstgui/lib/platform/iplatformframe.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {
namespace {

using VSTGUI::CRect;

constexpr std::uint64_t roundMilliseconds = 50;  // of the editor's own idle rounds, however often the host calls

// Takes all steps in their order, whatever one of them throws for short memory.
template <class... Steps>
void takeEach(Steps... steps) {
    const auto take = [](auto& step) {
        try {
            return step(), true;
        } catch (...) {
            return false;
        }
    };
    (take(steps), ...);
}

}  // namespace

EditorWindow::EditorWindow(Instrument& instrument, ProgramLoader& programs, const std::string& hostProduct)
    : instrument_(instrument), editor_(instrument, dialogs_, hostProduct), work_(instrument, editor_), programs_(programs) {
    GuiModule::shared().enter(platform::dataFolder());
    editor_.loadSize(screen());
}

EditorWindow::~EditorWindow() {
    close();
    GuiModule::shared().leave();
}

Screen EditorWindow::screen() const {
    const GuiModule::Size size = GuiModule::shared().screenSize();
    return {size.width, size.height};
}

EditorWindow::Size EditorWindow::size() const {
    const WindowSize& size = editor_.size();
    constexpr double almostWhole = 0.1;  // 0.8333 of 1800 are 1500 pixels, as its label says
    return {static_cast<int>(size.width() * size.zoom() + almostWhole),
            static_cast<int>(size.height() * size.zoom() + almostWhole)};
}

double EditorWindow::scale() const { return editor_.size().layoutScale() * editor_.size().zoom(); }

bool EditorWindow::open(std::uintptr_t parent) {
    if (frame != nullptr || parent == 0 || !GuiModule::shared().connect()) return false;
    try {
        return build(parent);
    } catch (...) {
        closeNow();
        throw;
    }
}

bool EditorWindow::build(std::uintptr_t parent) {
    parent_ = parent;
    thread_ = std::this_thread::get_id();
    if (!buildFrame()) return false;
    programs_.setWindowOpen(true);
    editor_.setLastProgram(programs_.lastNumber());
    index_ = std::make_unique<PatchIndex>(instrument_.messages());
    browserModel_ = std::make_unique<BrowserLibrary>(editor_.patches(), editor_.browser(), editor_.commands().patch(), *index_,
                                                     editor_.onShow(), &work_.history());
    dialogs_.setHost(content_.get());
    editor_.open(*this);
    loadsNoted_ = instrument_.patchesLoaded();  // what was there before is not played by opening a window
    placeNoted_ = {editor_.commands().patch().category(), editor_.patchName()};
    offerRecovery();
    return true;
}

// What another process left when it crashed, once for each instrument.
void EditorWindow::offerRecovery() {
    if (std::exchange(hasOffered_, true)) return;
    for (const RecoverablePatch& patch : Autosave::recoverable()) {
        const std::string named = patch.name.empty() ? "A patch without a name" : "The patch '" + patch.name + "'";
        dialogs_.question("Recovery", named + " was not saved when the host ended. Load it?", [this, patch](bool yes) {
            if (isClosing_) return static_cast<void>(hasOffered_ = false);  // not answered: offered again
            if (!yes) return static_cast<void>(Autosave::putAside(patch));
            const CommandLog::Running running(editor_.commands().log(), "Recover '" + patch.name + "'");
            if (!work_.autosave().recover(patch)) Autosave::putAside(patch);
        });
        return;  // one at a time: the next instrument asks for the next
    }
}

bool EditorWindow::buildFrame() {
    const WindowSize& chosen = editor_.size();
    const double width = chosen.width() / chosen.layoutScale(), height = chosen.height() / chosen.layoutScale();
    const Size pixels = size();
    if (!holder_) holder_ = std::make_unique<HolderWindow>(static_cast<std::uint32_t>(parent_), pixels.width, pixels.height);
    holder_->resize(pixels.width, pixels.height);
    frame = new VSTGUI::CFrame(CRect(0, 0, width, height), this);
    auto* const root = addView(*frame, new DropContainer(CRect(0, 0, width, height)));
    root->setBackgroundColor(style::window);
    content_ = std::make_unique<WindowContent>(*root, width, height, editor_, work_, instrument_);
    content_->setNotesWanted([this] { return openPatchNotes(); });
    browser_ = addView(*root, new MYBrowser(this));
    VSTGUI::X11::FrameConfig config;
    config.runLoop = GuiModule::shared().loop();
    auto* const host = reinterpret_cast<void*>(static_cast<std::uintptr_t>(holder_->id()));
    if (!frame->open(host, VSTGUI::PlatformType::kX11EmbedWindowID, &config)) {
        content_.reset();
        frame->forget();
        frame = nullptr;
        holder_.reset();
        return false;
    }
    const auto inner = reinterpret_cast<std::uintptr_t>(frame->getPlatformFrame()->getPlatformRepresentation());
    holder_->adopt(static_cast<std::uint32_t>(inner));
    frame->setZoom(chosen.layoutScale() * chosen.zoom());
    frame->registerKeyboardHook(this);
    return true;
}

void EditorWindow::takeFrameDown() {
    VSTGUI::CFrame* const closing = frame;
    takeEach(
        [this] {
            if (content_) content_->dismissLayers();
        },
        [&] { closing->unregisterKeyboardHook(this); }, [this] { content_.reset(); });
    frame = nullptr;
    holder_->drop();
    takeEach([&] { closing->close(); });
}

EditorWindow::Inside::~Inside() {
    if (--window_.inside_ > 0 || !std::exchange(window_.isCloseWanted_, false)) return;
    if (window_.frame != nullptr) window_.closeNow();
}

void EditorWindow::close() {
    if (!isOpen()) return;
    if (inside_ == 0) return closeNow();
    isCloseWanted_ = true;  // views are at work on the stack: they go at its end
}

void EditorWindow::closeNow() {
    const bool hasFrame = frame != nullptr;  // it may have failed to come back in another size
    later_.clear();
    takeEach([&] { editor_.close(hasFrame ? dialogs_.openCount() : 0); });
    isClosing_ = true;
    takeEach([this] { dialogs_.setHost(nullptr); });
    isClosing_ = false;
    if (hasFrame) takeFrameDown();
    holder_.reset();
    browserModel_.reset();
    index_.reset();
    programs_.setWindowOpen(false);
}

void EditorWindow::rebuild() {
    runLater([this] {
        const Size wanted = size();
        if (HostPort* host = instrument_.hostPort()) host->sizeWanted(wanted.width, wanted.height);
        if (!isOpen()) return;  // the host closed it over the question
        dialogs_.leaveHost();
        takeFrameDown();
        if (!buildFrame()) return closeNow();
        dialogs_.moveTo(*content_);
        editor_.open(*this);
        editor_.callOffLoad();  // the browser that was to choose its patch is gone
    });
}

// The frame is built anew with it.
void EditorWindow::setZoom(double) {}

bool EditorWindow::beforeSizeChange(const CRect& newSize, const CRect&) {
    if (holder_)
        holder_->resize(static_cast<int>(std::lround(newSize.getWidth())), static_cast<int>(std::lround(newSize.getHeight())));
    return true;
}

void EditorWindow::toggleBrowser() {
    if (browser_->isOpen()) return browser_->close();
    openBrowser();
}

void EditorWindow::openBrowser() {
    content_->dismissLayers();
    if (!browser_->open(*content_, browserModel_.get())) content_->openPatches();
}

// The browser opened or closed.
void EditorWindow::valueChanged(VSTGUI::CControl* browser) {
    if (content_) content_->showBrowserOpen(browser->getValue() > 0.5f);
}

bool EditorWindow::openPatchNotes() {
    const BrowserPatch patch = browserModel_ ? browserModel_->playing() : BrowserPatch();
    if (!patch.name.empty()) openNotes(*content_, *browserModel_, patch);
    return !patch.name.empty();
}

void EditorWindow::showCredits() {
    content_->dismissLayers();
    auto* credits = new CreditsView(content_->layerArea(), versionText, nullptr);
    credits->setClosed([this, credits] { content_->closeLayer(*credits); });
    content_->openLayer(credits);
}

void EditorWindow::idle() {
    if (!isOpen() || inside_ > 0 || std::this_thread::get_id() != thread_) return;
    const Inside inside(*this);
    frame->idle();  // turns what was marked into redraws
    GuiModule::shared().loop()->service();
    const auto jobs = std::exchange(later_, {});
    for (const auto& job : jobs)
        if (isOpen()) job();
    if (isOpen()) dialogs_.poll();
    const std::uint64_t now = VSTGUI::getPlatformFactory().getTicks();
    if (isOpen() && now - lastRound_ >= roundMilliseconds) {
        lastRound_ = now;
        editor_.idle();
        if (!isOpen()) return;  // a host may close the window from within a call of the editor's
        showMessages(instrument_.messages(), dialogs_);
        if (!isOpen()) return;
        work_.follow();
        notePlayed();
        content_->follow();
    }
    if (isOpen()) holder_->routeKeys(areGroundKeysHosts_ ? content_->wantsKeysVisibly() : content_->wantsKeys());
}

// Whatever loads or saves a patch of the library makes it one of the recent ones; what is saved or deleted shows at once.
void EditorWindow::notePlayed() {
    const unsigned changed = editor_.commands().filesChanged();
    if (std::exchange(filesNoted_, changed) != changed) index_->rescan();
    const std::uint32_t loads = instrument_.patchesLoaded();
    const PatchPlace place{editor_.commands().patch().category(), editor_.patchName()};
    if (std::exchange(loadsNoted_, loads) == loads && place == placeNoted_) return;
    placeNoted_ = place;
    if (place.category != customCategory) index_->notePlayed(place);
}

void EditorWindow::onKeyboardEvent(VSTGUI::KeyboardEvent& event, VSTGUI::CFrame*) { content_->onKey(event); }

bool EditorWindow::onHostKey(VSTGUI::KeyboardEvent& event) {
    if (!isOpen() || std::this_thread::get_id() != thread_ || !(content_->wantsKeys() || isOwnKey(event))) return false;
    const Inside inside(*this);
    content_->onKey(event);
    return event.consumed;
}

// What a host hands over while nothing here has the focus: Tab gives it one, and a step is taken back here if there is one to
// take; else the host may have some.
bool EditorWindow::isOwnKey(const VSTGUI::KeyboardEvent& event) const {
    const History& history = work_.history();
    const bool isShifted = event.modifiers.has(VSTGUI::ModifierKey::Shift);
    switch (letterWithControl(event)) {
        case U'z': return (isShifted ? history.redoCount() : history.undoCount()) > 0;
        case U'y': return history.redoCount() > 0;
        default: return event.virt == VSTGUI::VirtualKey::Tab;
    }
}

}  // namespace vantoric

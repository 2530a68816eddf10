#include "editor/file_chooser.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "editor/overlay.h"
#include "platform/files.h"
#include "platform/user_folders.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::ModifierKey;
using VSTGUI::VirtualKey;

namespace {

constexpr double headerHeight = 17, placeHeight = 17, padding = 12, barWidth = 4;
constexpr double newFolderHeight = 23;  // of the line above the rows in which a new folder is named
constexpr double sizeColumn = 62, dateColumn = 104;
constexpr double lowWindow = 300;
constexpr unsigned caretRounds = 10, roundsToLookAgain = 60;  // of `follow`: half a second, three seconds

std::string homeFolder() {
    std::string home = platform::homeFolder();
    if (!home.empty()) home.pop_back();  // the separator
    return home;
}

// Of the filter "Wave file (*.wav)": "*.wav files".
std::string filesText(const platform::FileRequest& request) {
    return request.extension.empty() ? "files" : "*" + request.extension + " files";
}

}  // namespace

FileChooser::FileChooser(const CRect& area, const platform::FileRequest& request, std::vector<Place> places,
                         platform::OnPath chosen)
    : LayerView(area), request_(request), places_(std::move(places)), chosen_(std::move(chosen)), home_(homeFolder()) {
    setTransparency(true);
    showsAll_ = request_.extension.empty();
    list_.setExtension(request_.extension);
    layOut();
    std::string start = request_.startFolder.empty() && !places_.empty() ? places_.front().folder : request_.startFolder;
    start = nearestFolder(typedPath(start, home_.empty() ? "/" : home_, home_));
    enter(start);
    if (!request_.isSave) return;
    name_.setText(request_.name, true);
    focus(Part::name);
}

// ---- where things stand

void FileChooser::layOut() {
    const CRect area = CRect(getViewSize()).inset(4, 4);
    isLow_ = getViewSize().getHeight() < lowWindow;
    const double width = isLow_ ? area.getWidth() : std::min(680.0, area.getWidth());
    const double height = isLow_ ? area.getHeight() : std::min(452.0, area.getHeight());
    const CPoint middle = area.getCenter();
    const double left = std::round(middle.x - width / 2), top = std::round(middle.y - height / 2);
    panel_ = {left, top, left + width, top + height};
    spots_.clear();
    const double inside = left + padding, end = panel_.right - padding;
    double y = top + (isLow_ ? 6 : 32);
    double pathEnd = end - 92, bodyEnd = end, bodyBottom;
    if (isLow_) {
        bodyEnd = end - 176;
        pathEnd = bodyEnd - 92;
        bodyBottom = panel_.bottom - 6;
        layOutSide({bodyEnd + 12, y, end, bodyBottom});
    } else {
        const double foot = request_.isSave ? 70 : 42;
        bodyBottom = panel_.bottom - foot;
        add(Part::close, {end - 16, top + 8, end + 2, top + 26});
        layOutFoot({inside, bodyBottom + 10, end, panel_.bottom - 12});
    }
    add(Part::up, {inside, y, inside + 22, y + 22});
    add(Part::path, {inside + 28, y, pathEnd, y + 22});
    add(Part::newFolder, {pathEnd + 6, y + 2, bodyEnd, y + 20});
    y += isLow_ ? 26 : 30;
    placesArea_ = {inside, y, inside + 128, bodyBottom};
    add(Part::places, placesArea_);
    const double listLeft = inside + 138, listEnd = bodyEnd;
    const double dateLeft = listEnd - 10 - dateColumn, sizeLeft = dateLeft - sizeColumn;
    add(Part::byName, {listLeft, y, sizeLeft, y + headerHeight});
    add(Part::bySize, {sizeLeft, y, dateLeft, y + headerHeight});
    add(Part::byDate, {dateLeft, y, listEnd, y + headerHeight});
    const double rows = std::floor((bodyBottom - y - headerHeight) / rowHeight());  // whole ones
    listArea_ = {listLeft, y + headerHeight, listEnd, y + headerHeight + rows * rowHeight()};
    add(Part::list, listArea_);
    scrollBars();
}

void FileChooser::layOutFoot(const CRect& foot) {
    double y = foot.top;
    if (request_.isSave) {
        add(Part::name, {foot.left + 138, y, foot.right, y + 22});
        y += 30;
    }
    double x = foot.left;
    if (!request_.extension.empty()) {
        const double width = chipWidth(filesText(request_));
        add(Part::fits, {x, y, x + width, y + 20});
        x += width + 6;
        const double allWidth = chipWidth("All files");
        add(Part::all, {x, y, x + allWidth, y + 20});
        x += allWidth + 6;
    }
    const double hiddenWidth = chipWidth("Hidden");
    add(Part::hidden, {x, y, x + hiddenWidth, y + 20});
    x += hiddenWidth + 12;
    add(Part::cancel, {foot.right - 150, y, foot.right - 78, y + 20});
    add(Part::accept, {foot.right - 72, y, foot.right, y + 20});
    noteArea_ = {x, y, foot.right - 158, y + 20};
}

void FileChooser::layOutSide(const CRect& side) {
    double y = side.top;
    if (request_.isSave) {
        add(Part::name, {side.left, y, side.right, y + 22});
        y += 28;
    } else {
        y += 18;  // the title
    }
    const double half = (side.getWidth() - 6) / 2;
    add(Part::cancel, {side.left, y, side.left + half, y + 20});
    add(Part::accept, {side.right - half, y, side.right, y + 20});
    y += 26;
    double x = side.left;
    if (!request_.extension.empty()) {
        const double width = std::min(chipWidth("*" + request_.extension), 64.0);
        add(Part::fits, {x, y, x + width, y + 18});
        x += width + 4;
        add(Part::all, {x, y, x + 36, y + 18});
        x += 40;
    }
    add(Part::hidden, {x, y, std::min(x + chipWidth("Hidden"), side.right), y + 18});
    y += 24;
    noteArea_ = {side.left, y - 1, side.right, y + 17};
}

void FileChooser::scrollBars() {
    listBar_.setPlace({listArea_.right - barWidth - 1, listArea_.top + 2, listArea_.right - 1, listArea_.bottom - 2},
                      rowHeight() * list_.count() + rowsTop() - listArea_.top, listArea_.getHeight());
    placesBar_.setPlace({placesArea_.right - barWidth, placesArea_.top, placesArea_.right, placesArea_.bottom},
                        placeHeight * static_cast<double>(places_.size()), placesArea_.getHeight());
}

CRect FileChooser::rectOf(Part part) const {
    for (const Spot& spot : spots_)
        if (spot.part == part) return spot.area;
    return {};
}

bool FileChooser::has(Part part) const { return !rectOf(part).isEmpty(); }

double FileChooser::rowHeight() const { return isLow_ ? 16 : 18; }

double FileChooser::rowsTop() const { return listArea_.top + (isMakingFolder_ ? newFolderHeight : 0); }

CRect FileChooser::rowRect(int row) const {
    const double top = rowsTop() + rowHeight() * row - listBar_.position();
    return {listArea_.left, top, listArea_.right - (listBar_.isNeeded() ? barWidth + 4 : 0), top + rowHeight()};
}

CRect FileChooser::placeRect(int place) const {
    const double top = placesArea_.top + placeHeight * place - placesBar_.position();
    return {placesArea_.left, top, placesArea_.right - (placesBar_.isNeeded() ? barWidth + 3 : 0), top + placeHeight};
}

FileChooser::Hit FileChooser::hit(CPoint where) const {
    for (const Spot& spot : spots_) {
        if (!spot.area.pointInside(where)) continue;
        if (spot.part == Part::list) {
            const int row = static_cast<int>(std::floor((where.y - rowsTop() + listBar_.position()) / rowHeight()));
            const bool isRow = where.y >= rowsTop() && row < list_.count() && rowRect(row).pointInside(where);
            return {spot.part, isRow ? row : -1};
        }
        if (spot.part == Part::places) {
            const int place = static_cast<int>(std::floor((where.y - placesArea_.top + placesBar_.position()) / placeHeight));
            return {spot.part, place < static_cast<int>(places_.size()) ? place : -1};
        }
        return {spot.part, -1};
    }
    return {};
}

CRect FileChooser::areaOf(const Hit& hit) const {
    if (hit.part == Part::list) return hit.row >= 0 ? rowRect(hit.row) : CRect();
    if (hit.part == Part::places) return hit.row >= 0 ? placeRect(hit.row) : CRect();
    return rectOf(hit.part);
}

// ---- folders

void FileChooser::enter(const std::string& folder, const std::string& selectedName) {
    list(folder, selectedName);
    typedFrom_ = folder;
    path_.setText(folder);
    completed_.clear();
    note("");
}

void FileChooser::list(const std::string& folder, const std::string& selectedName) {
    folder_ = folder;
    wantedName_ = selectedName;
    isFirstReading_ = true;
    isMakingFolder_ = false;
    list_.setListing({});
    selected_ = -1;
    listBar_.scrollTo(0);
    scrollBars();
    readAgo_ = 0;
    reader_.request(folder);
    refresh();
}

void FileChooser::show(FolderListing listing) {
    if (!isFirstReading_ && listing == list_.listing()) return;
    const std::string kept = isFirstReading_ ? wantedName_ : selected_ >= 0 ? list_.at(selected_).name : "";
    if (listing.folder != folder_) {  // a link led back to a folder above
        folder_ = listing.folder;
        if (focused_ != Part::path) path_.setText(folder_);
    }
    list_.setListing(std::move(listing));
    selected_ = kept.empty() ? -1 : list_.rowOf(kept);
    scrollBars();
    if (isFirstReading_ && selected_ < 0 && list_.count() > 0 && focused_ == Part::list) selected_ = 0;
    if (isFirstReading_ && selected_ >= 0) listBar_.reveal(rowHeight() * selected_, rowHeight() * (selected_ + 1));
    isFirstReading_ = false;
    refresh();
}

// The list follows a path that is being typed into each folder that is there; what it showed before is not chosen any more.
void FileChooser::showTyped(const FolderListing& listing) {
    if (focused_ != Part::path || listing.folder == folder_) return;
    selected_ = -1;
    refresh();
    if (listing.state != FolderState::read) return;
    list(listing.folder);
    show(listing);
}

void FileChooser::setMakingFolder(bool isMaking) {
    isMakingFolder_ = isMaking;
    scrollBars();
    refresh();
}

void FileChooser::finishReading() {
    reader_.finish();
    completions_.finish();
    follow();
}

void FileChooser::follow() {
    if (++rounds_ % caretRounds == 0 && typedLine() != nullptr) invalidRect(typingPlace());
    if (auto listing = reader_.take()) {
        show(std::move(*listing));
        readAgo_ = 0;
    }
    if (auto listing = completions_.take()) {
        showTyped(*listing);
        completionEntries_ = std::move(listing->entries);
        typedInto(path_);
    }
    if (++readAgo_ >= roundsToLookAgain && !reader_.isReading()) {
        readAgo_ = 0;
        reader_.request(folder_);
    }
}

void FileChooser::goUp() {
    const std::string above = nearestFolder(folderAbove(folder_));
    if (above == folder_) return;
    enter(above, std::filesystem::path(folder_).filename().string());
}

void FileChooser::select(int row) {
    if (list_.count() == 0) return;
    selected_ = std::clamp(row, 0, list_.count() - 1);
    listBar_.reveal(rowHeight() * selected_, rowHeight() * (selected_ + 1));
    if (request_.isSave && !list_.at(selected_).isFolder) name_.setText(list_.at(selected_).name);
    note("");
}

void FileChooser::makeFolder() {
    const std::string name = folderName_.text();
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        return note("A folder needs a name without slashes.");
    const std::string made = joinedPath(folder_, name);
    std::error_code error;
    if (!std::filesystem::create_directory(made, error))
        return note(platform::exists(made) ? "There is something of that name already." : "The folder can't be made here.");
    enter(made);
    focus(Part::list);
}

std::string FileChooser::emptyWords() const {
    if (isFirstReading_) return "Reading \u2026";
    switch (list_.listing().state) {
        case FolderState::missing: return "This folder is no longer there.";
        case FolderState::forbidden: return "You have no right to look into this folder.";
        case FolderState::noFolder: return "This is not a folder.";
        case FolderState::failed: return "This folder can't be read.";
        case FolderState::read: break;
    }
    if (list_.listing().entries.empty()) return "Nothing is in this folder.";
    return showsAll_ ? "Nothing but hidden files is in this folder." : "No " + filesText(request_) + " are in this folder.";
}

// ---- what is done

void FileChooser::note(const std::string& text) {
    note_ = text;
    refresh();
}

bool FileChooser::canAccept() const {
    if (request_.isSave) return !name_.text().empty();
    if (focused_ == Part::path) return !path_.text().empty();
    return selected_ >= 0;
}

void FileChooser::finish(std::optional<std::string> path) {
    const auto alive = VSTGUI::shared(this);
    if (const auto chosen = std::exchange(chosen_, nullptr)) chosen(std::move(path));
}

void FileChooser::acceptSelected() {
    if (selected_ < 0) return;
    const FileEntry& entry = list_.at(selected_);
    const std::string path = joinedPath(folder_, entry.name);
    if (entry.isFolder) return enter(path);
    finish(path);
}

void FileChooser::accept() {
    if (!request_.isSave) return focused_ == Part::path ? acceptPath() : acceptSelected();
    const std::string& name = name_.text();
    if (name.empty()) return note("Type a name for the file.");
    const std::string path = typedPath(name, folder_, home_);
    if (platform::isFolder(path)) {
        name_.setText("");
        return enter(path);
    }
    if (!platform::isFolder(folderAbove(path))) return note("There is no such folder.");
    finish(path);
}

void FileChooser::acceptPath() {
    const std::string path = typedPath(path_.text(), typedFrom_, home_);
    if (platform::isFolder(path)) {
        enter(path);
        return focus(Part::list);
    }
    if (!platform::isFolder(folderAbove(path))) return note("There is no such folder.");
    if (request_.isSave) {
        name_.setText(std::filesystem::path(path).filename().string());
        enter(folderAbove(path));
        return focus(Part::name);
    }
    if (!platform::exists(path)) return note("There is no such file.");
    finish(path);
}

void FileChooser::act(Part part) {
    switch (part) {
        case Part::up: return goUp();
        case Part::newFolder:
            setMakingFolder(true);
            folderName_.setText("New folder", true);
            return focus(Part::list);
        case Part::byName: list_.orderBy(FileOrder::name); break;
        case Part::bySize: list_.orderBy(FileOrder::size); break;
        case Part::byDate: list_.orderBy(FileOrder::date); break;
        case Part::fits:
        case Part::all:
            showsAll_ = part == Part::all;
            list_.setExtension(showsAll_ ? "" : request_.extension);
            break;
        case Part::hidden: list_.setShowsHidden(!list_.showsHidden()); break;
        case Part::cancel:
        case Part::close: return dismiss();
        case Part::accept: return accept();
        default: return;
    }
    selected_ = list_.count() > 0 && !request_.isSave ? 0 : -1;
    listBar_.scrollTo(0);
    scrollBars();
    refresh();
}

// ---- the pointer

void FileChooser::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (listBar_.press(event.mousePosition) || placesBar_.press(event.mousePosition)) return refresh();
    if (!event.buttonState.isLeft()) return;
    const Hit target = hit(event.mousePosition);
    const bool isSecond = clicks_.isSecond(event.mousePosition);
    if (isMakingFolder_) setMakingFolder(false);
    pressed_ = target.part;
    switch (target.part) {
        case Part::path:
            if (focused_ != Part::path) startPath(folder_ == "/" ? "/" : folder_ + "/");
            return;
        case Part::name: return focus(Part::name);
        case Part::places:
            if (target.row >= 0) enter(places_[static_cast<std::size_t>(target.row)].folder);
            return focus(request_.isSave ? Part::name : Part::list);
        case Part::list:
            focus(Part::list);
            if (target.row < 0) return;
            if (isSecond && target.row == selected_)
                return request_.isSave && !list_.at(selected_).isFolder ? accept() : acceptSelected();
            return select(target.row);
        default: refresh();
    }
}

void FileChooser::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (listBar_.isHeld() || placesBar_.isHeld()) {
        listBar_.drag(event.mousePosition);
        placesBar_.drag(event.mousePosition);
        return refresh();
    }
    const Hit over = hit(event.mousePosition);
    if (over == hovered_) return;
    const Hit before = std::exchange(hovered_, over);
    for (const Hit& changed : {before, over})
        if (changed.part != Part::none) invalidRect(areaOf(changed).inset(-3, -3));
}

void FileChooser::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    listBar_.release();
    placesBar_.release();
    const Part pressed = std::exchange(pressed_, Part::none);
    refresh();
    if (pressed != Part::none && hit(event.mousePosition).part == pressed) act(pressed);
}

void FileChooser::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    listBar_.release();
    placesBar_.release();
    pressed_ = Part::none;
    refresh();
}

void FileChooser::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    if (placesArea_.pointInside(event.mousePosition)) {
        placesBar_.scrollBy(-2 * placeHeight * event.deltaY);
    } else {
        listBar_.scrollBy(-3 * rowHeight() * event.deltaY);
    }
    hovered_ = hit(event.mousePosition);
    refresh();
}

// ---- keys

LineEdit* FileChooser::typedLine() {
    if (isMakingFolder_) return &folderName_;
    if (focused_ == Part::path) return &path_;
    if (focused_ == Part::name) return &name_;
    return nullptr;
}

CRect FileChooser::typingPlace() const {
    if (isMakingFolder_) return {listArea_.left, listArea_.top + 1, listArea_.right - 8, listArea_.top + 21};
    return rectOf(focused_);
}

bool FileChooser::hasCaret() const { return rounds_ / caretRounds % 2 == 0; }

void FileChooser::focus(Part part) {
    if (focused_ == Part::path && part != Part::path) {
        path_.setText(folder_);
        completed_.clear();
    }
    if (part == Part::path && focused_ != Part::path) {
        typedFrom_ = folder_;
        completionFolder_.clear();
    }
    focused_ = part;
    if (part == Part::list && selected_ < 0 && list_.count() > 0 && !isMakingFolder_ && !request_.isSave) select(0);
    rounds_ = 0;
    refresh();
}

void FileChooser::focusNext(int direction) {
    static constexpr std::array order{Part::name, Part::list, Part::places, Part::up,     Part::path,  Part::newFolder,
                                      Part::fits, Part::all,  Part::hidden, Part::cancel, Part::accept};
    constexpr int count = static_cast<int>(order.size());
    int at = static_cast<int>(std::ranges::find(order, focused_) - order.begin());
    do at = (at + direction + count) % count;
    while (!has(order[static_cast<std::size_t>(at)]));
    focus(order[static_cast<std::size_t>(at)]);
}

void FileChooser::startPath(const std::string& text) {
    focus(Part::path);
    path_.setText(text);
    typedInto(path_);
}

void FileChooser::typedInto(LineEdit& line) {
    rounds_ = 0;
    note("");
    if (&line != &path_ || focused_ != Part::path) return;
    const std::string& text = path_.text();
    const std::size_t slash = text.rfind('/');
    const std::string leaf = slash == std::string::npos ? text : text.substr(slash + 1);
    const std::string folder = slash == std::string::npos ? typedFrom_ : typedPath(text.substr(0, slash + 1), typedFrom_, home_);
    completed_.clear();
    if (folder != completionFolder_) {
        completionFolder_ = folder;
        completionEntries_.clear();
        completions_.request(folder);
    }
    if (leaf.empty()) return;
    completed_ = completionOf(leaf, completionEntries_);
}

void FileChooser::complete() {
    path_.setText(path_.text() + completed_);
    typedInto(path_);
}

void FileChooser::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown || onShortcut(event)) return;
    const bool isEnter = event.virt == VirtualKey::Return || event.virt == VirtualKey::Enter;
    if (event.virt == VirtualKey::Escape) {
        if (isMakingFolder_) {
            setMakingFolder(false);
            return note("");
        }
        if (focused_ != Part::path) return dismiss();
        if (folder_ != typedFrom_) enter(typedFrom_);
        return focus(request_.isSave ? Part::name : Part::list);
    }
    if (event.virt == VirtualKey::Tab && !isMakingFolder_) {
        const bool isBack = event.modifiers.has(ModifierKey::Shift);
        if (focused_ == Part::path && !isBack && !completed_.empty()) return complete();
        return focusNext(isBack ? -1 : 1);
    }
    if (LineEdit* line = typedLine()) {
        if (isEnter) return isMakingFolder_ ? makeFolder() : line == &path_ ? acceptPath() : accept();
        if (event.virt == VirtualKey::Down && !isMakingFolder_) return focus(Part::list);
        if (line->onKey(event)) typedInto(*line);
        return;
    }
    if (focused_ == Part::list) return onListKey(event);
    if (focused_ == Part::places) return onPlacesKey(event);
    if (isEnter || event.virt == VirtualKey::Space) return act(focused_);
    if (event.virt == VirtualKey::Left) return focusNext(-1);
    if (event.virt == VirtualKey::Right) return focusNext(1);
}

bool FileChooser::onShortcut(const VSTGUI::KeyboardEvent& event) {
    if (event.virt == VirtualKey::F5) {
        reader_.request(folder_);
        return true;
    }
    if (event.virt == VirtualKey::Up && event.modifiers.has(ModifierKey::Alt)) {
        goUp();
        return true;
    }
    switch (letterWithControl(event)) {
        case U'l': startPath(folder_ == "/" ? "/" : folder_ + "/"); return true;
        case U'n': act(Part::newFolder); return true;
        case U'h': act(Part::hidden); return true;
        default: return false;
    }
}

void FileChooser::onListKey(const VSTGUI::KeyboardEvent& event) {
    const int page = std::max(1, static_cast<int>(listArea_.getHeight() / rowHeight()) - 1);
    switch (event.virt) {
        case VirtualKey::Up: return select(selected_ - 1);
        case VirtualKey::Down: return select(selected_ + 1);
        case VirtualKey::PageUp: return select(selected_ - page);
        case VirtualKey::PageDown: return select(selected_ + page);
        case VirtualKey::Home: return select(0);
        case VirtualKey::End: return select(list_.count() - 1);
        case VirtualKey::Left:
        case VirtualKey::Back: return goUp();
        case VirtualKey::Right:
            if (selected_ >= 0 && list_.at(selected_).isFolder) acceptSelected();
            return;
        case VirtualKey::Return:
        case VirtualKey::Enter:
            if (request_.isSave && selected_ >= 0 && !list_.at(selected_).isFolder) return accept();
            return acceptSelected();
        case VirtualKey::Space: return typedLetter(U' ');
        default: break;
    }
    if (event.character == U'/' || event.character == U'~') return startPath(utf8Of(event.character));
    if (event.character != 0 && !event.modifiers.has(ModifierKey::Control)) typedLetter(event.character);
}

void FileChooser::onPlacesKey(const VSTGUI::KeyboardEvent& event) {
    const int last = static_cast<int>(places_.size()) - 1;
    switch (event.virt) {
        case VirtualKey::Up: focusedPlace_ = std::max(0, focusedPlace_ - 1); break;
        case VirtualKey::Down: focusedPlace_ = std::min(last, focusedPlace_ + 1); break;
        case VirtualKey::Right:
        case VirtualKey::Space:
        case VirtualKey::Return:
        case VirtualKey::Enter:
            if (focusedPlace_ <= last) enter(places_[static_cast<std::size_t>(focusedPlace_)].folder);
            return focus(Part::list);
        default: return;
    }
    placesBar_.reveal(placeHeight * focusedPlace_, placeHeight * (focusedPlace_ + 1));
    refresh();
}

void FileChooser::typedLetter(char32_t character) {
    constexpr std::uint64_t pause = 1000;  // milliseconds after which a word begins anew
    const std::uint64_t now = VSTGUI::getPlatformFactory().getTicks();
    if (now - typedTicks_ > pause) typed_.clear();
    typedTicks_ = now;
    typed_ += utf8Of(character);
    // A letter alone goes on to the next row that begins with it.
    const bool isFirst = typed_.size() == utf8Of(character).size();
    const int row = list_.rowWith(typed_, isFirst ? selected_ + 1 : selected_);
    if (row >= 0) select(row);
}

// ---- drawing

void FileChooser::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawVeil(pen, getViewSize());
    drawPanel(pen, panel_, 8, style::panel);
    drawHead(pen);
    if (isDrawn(pen, placesArea_)) drawPlaces(pen);
    drawColumns(pen);
    if (isDrawn(pen, listArea_)) drawRows(pen);
    drawFoot(pen);
    setDirty(false);
}

void FileChooser::drawHead(Pen& pen) const {
    if (!isLow_) {
        pen.text(panel_.left + padding + 2, panel_.top + 21, request_.title, Face::title, 11, style::text);
        drawCross(pen, rectOf(Part::close).getCenter(), hovered_.part == Part::close ? style::white : style::text2);
    }
    const CRect up = rectOf(Part::up);
    pen.round(up.left, up.top, up.getWidth(), up.getHeight(), 4, hovered_.part == Part::up ? style::hover : style::raised);
    pen.chevron(up.getCenter().x, up.getCenter().y, Pointing::up, 3.4, style::text2, 1.5);
    if (focused_ == Part::up) pen.roundLine(up.left - 2, up.top - 2, up.getWidth() + 4, up.getHeight() + 4, 6, style::white, 1.2);
    const CRect place = rectOf(Part::path);
    const bool isTyped = focused_ == Part::path;
    drawTypingPlace(pen, place, isTyped || hovered_.part == Part::path);
    const double x = place.left + 9, y = place.top + 14.6, width = place.getWidth() - 18;
    if (isTyped) {
        const double hint =
            completed_.empty() ? 0 : pen.text(place.right - 8, y, "Tab completes", Face::medium, 9, style::text3, Align::right);
        path_.draw(pen, x, y, width - (hint > 0 ? hint + 10 : 0), Face::medium, 10.5, style::text, true, hasCaret());
        const double typed = pen.textWidth(path_.text(), Face::medium, 10.5), room = width - typed - hint - 12;
        if (room > 10) pen.text(x + typed, y, shownName(completed_), Face::medium, 10.5, style::text3, Align::left, room);
    } else {
        // The end of a long path tells more than its beginning.
        std::string shown = folder_;
        bool isCut = false;
        while (pen.textWidth(shown, Face::medium, 10.5) > width - 12 && shown.find('/', 1) != std::string::npos) {
            shown = shown.substr(shown.find('/', 1));
            isCut = true;
        }
        pen.text(x, y, (isCut ? "\u2026" : "") + shown, Face::medium, 10.5, style::text, Align::left, width);
    }
    drawButton(pen, rectOf(Part::newFolder), "New folder",
               {.isHovered = hovered_.part == Part::newFolder,
                .isPressed = pressed_ == Part::newFolder,
                .isFocused = focused_ == Part::newFolder});
}

void FileChooser::drawPlaces(Pen& pen) const {
    const Pen::Clip clip(pen, placesArea_.left - 4, placesArea_.top, placesArea_.getWidth() + 8, placesArea_.getHeight());
    for (int place = 0; place < static_cast<int>(places_.size()); ++place) {
        const CRect row = placeRect(place);
        if (row.bottom < placesArea_.top || row.top > placesArea_.bottom) continue;
        const Place& shown = places_[static_cast<std::size_t>(place)];
        const bool isHere = shown.folder == folder_, isHovered = hovered_ == Hit{Part::places, place};
        if (isHere || isHovered)
            pen.round(row.left, row.top, row.getWidth(), row.getHeight() - 1, 3, fade(style::white, isHere ? 0.1 : 0.06));
        if (focused_ == Part::places && focusedPlace_ == place)
            pen.roundLine(row.left, row.top, row.getWidth(), row.getHeight() - 1, 3, style::white, 1.2);
        const bool startsRecent = shown.isRecent && place > 0 && !places_[static_cast<std::size_t>(place) - 1].isRecent;
        if (startsRecent) pen.rect(row.left + 4, row.top - 0.5, row.getWidth() - 8, pen.hair(), style::menuEdge);
        drawFolder(pen, {row.left + 12, row.getCenter().y},
                   shown.isRecent ? style::text3
                   : isHere       ? style::oscillators
                                  : style::text2);
        pen.text(row.left + 23, row.top + 12, shownName(shown.label), isHere ? Face::semibold : Face::medium, 9.5,
                 isHere || isHovered ? style::text : style::text2, Align::left, row.getWidth() - 28);
    }
    placesBar_.draw(pen, style::panel);
}

void FileChooser::drawColumns(Pen& pen) const {
    const auto head = [&](Part part, const char* label, FileOrder order, Align align) {
        const CRect area = rectOf(part);
        const bool isOrder = list_.order() == order;
        const Color ink = isOrder || hovered_.part == part ? style::text2 : style::text3;
        const double edge = align == Align::left ? area.left + 25 : area.right - 14;
        const double width = pen.text(edge, area.top + 11, label, Face::medium, 9, ink, align);
        if (isOrder)
            pen.chevron(align == Align::left ? edge + width + 8 : edge + 7, area.top + 8,
                        list_.isReversed() ? Pointing::down : Pointing::up, 2.2, ink);
    };
    head(Part::byName, "Name", FileOrder::name, Align::left);
    head(Part::bySize, "Size", FileOrder::size, Align::right);
    head(Part::byDate, "Changed", FileOrder::date, Align::right);
    pen.rect(listArea_.left, listArea_.top - 1, listArea_.getWidth(), pen.hair(), style::line);
}

void FileChooser::drawRows(Pen& pen) const {
    drawNewFolder(pen);
    const Pen::Clip clip(pen, listArea_.left, rowsTop(), listArea_.getWidth(), listArea_.bottom - rowsTop());
    if (list_.count() == 0)
        pen.text(listArea_.getCenter().x, listArea_.top + std::min(60.0, listArea_.getHeight() / 2 + 3), emptyWords(),
                 Face::medium, 10, style::text2, Align::centre, listArea_.getWidth() - 20);
    const int first = std::max(0, static_cast<int>(listBar_.position() / rowHeight()));
    for (int row = first; row < list_.count(); ++row) {
        const CRect area = rowRect(row);
        if (area.top > listArea_.bottom) break;
        if (isDrawn(pen, area)) drawRow(pen, row, area);
    }
    listBar_.draw(pen, style::panel);
}

void FileChooser::drawNewFolder(Pen& pen) const {
    if (!isMakingFolder_) return;
    const CRect place = typingPlace();
    drawTypingPlace(pen, place, true);
    drawFolder(pen, {place.left + 13, place.getCenter().y}, style::oscillators);
    folderName_.draw(pen, place.left + 25, place.top + 13.6, place.getWidth() - 32, Face::medium, 10, style::text, true,
                     hasCaret());
}

void FileChooser::drawRow(Pen& pen, int row, const CRect& area) const {
    const FileEntry& entry = list_.at(row);
    const bool isSelected = row == selected_, isHovered = hovered_ == Hit{Part::list, row};
    if (isSelected) {
        const bool isActive = focused_ == Part::list;
        pen.round(area.left, area.top + 0.5, area.getWidth(), area.getHeight() - 1, 3,
                  mix(style::panel, style::oscillators, isActive ? 0.22 : 0.12));
        pen.round(area.left, area.top + 3, 2.4, area.getHeight() - 6, 1.2, style::oscillators);
    } else if (isHovered) {
        pen.round(area.left, area.top + 0.5, area.getWidth(), area.getHeight() - 1, 3, fade(style::white, 0.06));
    }
    const CPoint icon(area.left + 13, area.getCenter().y);
    entry.isFolder ? drawFolder(pen, icon, mix(style::panel, style::oscillators, 0.75)) : drawSheet(pen, icon, style::text3);
    const double base = area.getCenter().y + 3.6;
    const CRect size = rectOf(Part::bySize), date = rectOf(Part::byDate);
    const Color ink = entry.isHidden() ? style::text3 : style::text;
    pen.text(area.left + 25, base, shownName(entry.name), isSelected ? Face::semibold : Face::medium, 10, ink, Align::left,
             size.left - area.left - 27);
    const Color faint = isSelected ? style::text2 : style::text3;
    if (!entry.isFolder) pen.text(size.right - 14, base, sizeText(entry.size), Face::medium, 9, faint, Align::right);
    pen.text(date.right - 14, base, dateText(entry.changed), Face::medium, 9, faint, Align::right);
}

void FileChooser::drawChipOf(Pen& pen, Part part, const std::string& label, bool isOn) const {
    if (has(part)) drawChip(pen, rectOf(part), label, isOn, hovered_.part == part, focused_ == part);
}

void FileChooser::drawFoot(Pen& pen) const {
    drawChipOf(pen, Part::fits, isLow_ ? "*" + request_.extension : filesText(request_), !showsAll_);
    drawChipOf(pen, Part::all, isLow_ ? "All" : "All files", showsAll_);
    drawChipOf(pen, Part::hidden, "Hidden", list_.showsHidden());
    const auto look = [&](Part part, bool isMain, bool isOff) {
        return ButtonLook{.isMain = isMain && !isOff,
                          .isHovered = hovered_.part == part && !isOff,
                          .isPressed = pressed_ == part,
                          .isFocused = focused_ == part,
                          .isOff = isOff};
    };
    drawButton(pen, rectOf(Part::cancel), "Cancel", look(Part::cancel, false, false));
    drawButton(pen, rectOf(Part::accept), request_.isSave ? "Save" : "Open", look(Part::accept, true, !canAccept()));
    if (request_.isSave) {
        const CRect place = rectOf(Part::name);
        drawTypingPlace(pen, place, focused_ == Part::name);
        if (!isLow_) pen.text(place.left - 10, place.top + 14.6, "Name", Face::medium, 10, style::text2, Align::right);
        const bool isEmpty = name_.text().empty();
        if (isEmpty && focused_ != Part::name)
            pen.text(place.left + 9, place.top + 14.6, "Name of the file", Face::medium, 10.5, style::text3);
        double ending = 0;
        if (!request_.extension.empty() && !name_.text().ends_with(request_.extension))
            ending =
                pen.text(place.right - 8, place.top + 14.6, request_.extension, Face::medium, 10, style::text3, Align::right) + 8;
        name_.draw(pen, place.left + 9, place.top + 14.6, place.getWidth() - 18 - ending, Face::medium, 10.5, style::text,
                   focused_ == Part::name, hasCaret());
    } else if (isLow_) {
        pen.text(rectOf(Part::cancel).left, panel_.top + 18, request_.title, Face::title, 9.5, style::text, Align::left, 176);
    }
    if (noteArea_.bottom > panel_.bottom) return;
    std::string text = note_;
    if (text.empty() && list_.count() > 0) text = std::to_string(list_.count()) + (list_.count() == 1 ? " item" : " items");
    pen.text(noteArea_.left, noteArea_.top + 13.4, text, Face::medium, 9,
             note_.empty() ? style::text3 : mix(style::alarm, style::white, 0.45), Align::left, noteArea_.getWidth());
}

}  // namespace vantoric

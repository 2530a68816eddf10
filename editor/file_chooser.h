// The window's own file chooser: folders and files, places, a path that can be typed, and a name for what is saved.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "editor/control_face.h"
#include "editor/file_list.h"
#include "editor/layer_view.h"
#include "editor/line_edit.h"
#include "editor/panel_parts.h"
#include "platform/dialogs.h"

namespace vantoric {

// Over the whole window, in any of its sizes. Folders are read in the background and looked at again every few seconds, so
// what comes and goes on disk comes and goes in the list. Whether a file may be overwritten is asked by who asked for the path.
//
// Keys: arrows and letters go through the list, Enter opens, Backspace goes up, "/" and "~" begin a path, Tab completes it or
// goes on to the next part, and the list follows it into folders, F5 reads anew, Ctrl+L the path, Ctrl+N a new folder, Ctrl+H
// hidden files, Escape goes back.
class FileChooser : public LayerView {
public:
    struct Place {
        std::string label, folder;
        bool isRecent = false;
    };
    // `chosen` is called once, with the view still there: with a path, or nothing if the user went back. The list begins at
    // the request's folder, or the nearest above it that is there.
    FileChooser(const VSTGUI::CRect& area, const platform::FileRequest& request, std::vector<Place> places,
                platform::OnPath chosen);

    // The folder that is listed.
    const std::string& folder() const { return folder_; }

    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override { finish({}); }
    void follow() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    // For tests: waits for the folder, and shows it.
    void finishReading();
    const FileList& list() const { return list_; }
    int selected() const { return selected_; }
    VSTGUI::CRect rowRect(int row) const;
    const std::string& note() const { return note_; }

    CLASS_METHODS_NOCOPY(FileChooser, VSTGUI::CView)

private:
    enum class Part {
        none,
        up,
        path,
        newFolder,
        places,
        list,
        byName,
        bySize,
        byDate,
        name,
        fits,
        all,
        hidden,
        cancel,
        accept,
        close
    };
    struct Spot {
        Part part;
        VSTGUI::CRect area;
    };
    struct Hit {
        Part part = Part::none;
        int row = -1;
        friend bool operator==(const Hit&, const Hit&) = default;
    };

    // ---- where things stand
    void layOut();
    void layOutFoot(const VSTGUI::CRect& foot);
    void layOutSide(const VSTGUI::CRect& side);
    void add(Part part, const VSTGUI::CRect& area) { spots_.push_back({part, area}); }
    double rowHeight() const;
    double rowsTop() const;
    VSTGUI::CRect rectOf(Part part) const;
    bool has(Part part) const;
    VSTGUI::CRect placeRect(int place) const;
    Hit hit(VSTGUI::CPoint where) const;
    VSTGUI::CRect areaOf(const Hit& hit) const;
    void scrollBars();

    // ---- folders
    void enter(const std::string& folder, const std::string& selectedName = "");
    void list(const std::string& folder, const std::string& selectedName = "");
    void show(FolderListing listing);
    void showTyped(const FolderListing& listing);
    void setMakingFolder(bool isMaking);
    void goUp();
    void select(int row);
    void makeFolder();
    std::string emptyWords() const;

    // ---- what is done
    void act(Part part);
    void acceptPath();
    void acceptSelected();
    void accept();
    bool canAccept() const;
    void finish(std::optional<std::string> path);
    void note(const std::string& text);

    // ---- keys
    LineEdit* typedLine();
    VSTGUI::CRect typingPlace() const;
    void focus(Part part);
    void focusNext(int direction);
    void startPath(const std::string& text);
    void typedInto(LineEdit& line);
    void complete();
    bool onShortcut(const VSTGUI::KeyboardEvent& event);
    void onListKey(const VSTGUI::KeyboardEvent& event);
    void onPlacesKey(const VSTGUI::KeyboardEvent& event);
    void typedLetter(char32_t character);

    // ---- drawing
    void drawHead(Pen& pen) const;
    void drawPlaces(Pen& pen) const;
    void drawColumns(Pen& pen) const;
    void drawRows(Pen& pen) const;
    void drawNewFolder(Pen& pen) const;
    void drawRow(Pen& pen, int row, const VSTGUI::CRect& area) const;
    void drawFoot(Pen& pen) const;
    void drawChipOf(Pen& pen, Part part, const std::string& label, bool isOn) const;
    bool hasCaret() const;
    void refresh() { invalidRect(panel_); }

    platform::FileRequest request_;
    std::vector<Place> places_;
    platform::OnPath chosen_;
    std::string home_;

    std::string folder_, wantedName_;
    std::string typedFrom_;  // the folder that a typed path begins at, and that Escape goes back to
    FolderReader reader_, completions_;
    bool isFirstReading_ = false;
    FileList list_;
    bool showsAll_ = false;
    int selected_ = -1, focusedPlace_ = 0;
    std::string note_;
    bool isMakingFolder_ = false;

    LineEdit path_{4096}, name_{255}, folderName_{255};
    std::string completed_, completionFolder_;  // what Tab would add; whose entries the completions know
    std::vector<FileEntry> completionEntries_;

    VSTGUI::CRect panel_, listArea_, placesArea_, noteArea_;
    bool isLow_ = false;
    std::vector<Spot> spots_;
    ScrollBar listBar_, placesBar_;
    Part focused_ = Part::list;
    Hit hovered_;
    Part pressed_ = Part::none;
    ClickPair clicks_;
    std::string typed_;
    std::uint64_t typedTicks_ = 0;
    unsigned rounds_ = 0, readAgo_ = 0;
};

}  // namespace vantoric

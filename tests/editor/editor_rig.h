// An editor with its engine and a window that only notes what it is told.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "editor/model/q7editor.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "tests/engine/engine_rig.h"

namespace vantoric::test {

struct NotedView : EditorView {
    std::vector<int> redrawn;  // rows of the table
    std::vector<WindowPart> parts;
    std::vector<std::string> hints;
    std::vector<int> menus;
    std::vector<double> zooms;
    int redrawnAll = 0, pagesShown = 0, rebuilt = 0, browsersToggled = 0, namesShown = 0, browsersOpened = 0, creditsShown = 0;
    Screen primary{4000, 2300};

    void redrawControl(int index) override { redrawn.push_back(index); }
    void redrawPart(WindowPart part) override { parts.push_back(part); }
    void redrawAll() override { ++redrawnAll; }
    void showPages() override { ++pagesShown; }
    void rebuild() override { ++rebuilt; }
    void setZoom(double zoom) override { zooms.push_back(zoom); }
    Screen screen() const override { return primary; }
    void toggleBrowser() override { ++browsersToggled; }
    void openBrowser() override { ++browsersOpened; }
    void openMenu(int index) override { menus.push_back(index); }
    void showPatchName() override { ++namesShown; }
    void showHint(const std::string& text) override { hints.push_back(text); }
    void showCredits() override { ++creditsShown; }

    // Whether the control of that name (the first of several) was told to redraw.
    bool hasRedrawn(const char* name) const {
        return std::find(redrawn.begin(), redrawn.end(), controlIndexForName(name)) != redrawn.end();
    }
    bool hasRedrawn(WindowPart part) const { return std::find(parts.begin(), parts.end(), part) != parts.end(); }
    void forget() { *this = NotedView(); }
};

struct EditorRig {
    // Parameters are 0 and the matrix is empty; layer 0 and the first pages show.
    explicit EditorRig(const char* hostProduct = "")
        : editor(rig.audio, dialogs, hostProduct,
                 [this](const std::string& address) { return pages.push_back(address), platform::PageOpening::opened(); }) {
        rig.clearParameters();
        for (int layer = 0; layer < layerCount; ++layer)
            for (int i = 0; i < storedMatrixSlots; ++i) rig.set(par::MatVal1 + i, 0.5f, layer);
        audio.messages().take();  // of a start without factory sounds
        editor.open(view);
        editor.idle();
        view.forget();
    }

    float value(int index) const { return audio.parameters().getParameter(index); }
    void program(int number) {
        rig.send({{0xc0, number, 0}});
        rig.block(64);
    }
    // The values of all parameters.
    std::vector<float> values() const {
        std::vector<float> all;
        for (int i = 0; i < parameterCount; ++i) all.push_back(value(i));
        return all;
    }

    EngineRig rig;
    Instrument& audio = rig.audio;
    platform::RecordedDialogs dialogs;
    NotedView view;
    std::vector<std::string> pages;  // of the web, that were opened
    Q7Editor editor;
};

}  // namespace vantoric::test

// An instrument with what its window knows of the matrix and of controllers.
#pragma once

#include "editor/model/knob_commands.h"
#include "engine/engine_rig.h"
#include "golden_runner/golden.h"
#include "platform/recorded_dialogs.h"

namespace vantoric::test {

struct EditorBench {
    EngineRig rig;
    OnShow onShow;
    ParameterEdits edits{rig.audio};
    platform::RecordedDialogs dialogs;
    MatrixEditing matrix{rig.audio.parameters(), edits, onShow, dialogs};
    MidiLearn learn{rig.audio};
    KnobCommands commands{edits, onShow, matrix, learn};

    // All parameters 0 and all amounts of the matrix in the middle.
    explicit EditorBench(int layer = 0, bool multilayer = false) {
        onShow.layer = layer;
        onShow.multilayer = multilayer;
        rig.clearParameters();
        for (int l = 0; l < layerCount; ++l)
            for (int i = 0; i < storedMatrixSlots; ++i) rig.set(par::MatVal1 + i, 0.5f, l);
    }

    // Rows are [layer, slot, source, destination, amount].
    void setSlots(const golden::json& rows) {
        for (const golden::json& row : rows) {
            const int layer = row[0], slot = row[1];
            rig.setList(par::MatSrc1 + slot, row[2], layer);
            rig.setList(par::MatDst1 + slot, row[3], layer);
            rig.set(par::MatVal1 + slot, golden::asFloat(row[4]), layer);
        }
    }
    // Rows are [host index, value].
    void setValues(const golden::json& rows) {
        for (const golden::json& row : rows) rig.set(row[0].get<int>(), golden::asFloat(row[1]));
    }
    // Rows are [controller, host index].
    void setMap(const golden::json& rows) {
        for (int cc = 0; cc < 128; ++cc) rig.audio.controllerMap().set(cc, ControllerMap::none);
        for (const golden::json& row : rows) rig.audio.controllerMap().set(row[0], row[1]);
    }

    float value(int index) const { return rig.audio.parameters().getParameter(index); }

    // Those that are not empty.
    golden::json slots() const {
        golden::json rows = golden::json::array();
        for (int layer = 0; layer < layerCount; ++layer)
            for (int i = 0; i < storedMatrixSlots; ++i) {
                const int source = rig.audio.parameters().getListIndex(hostIndex(par::MatSrc1 + i, layer));
                const int destination = rig.audio.parameters().getListIndex(hostIndex(par::MatDst1 + i, layer));
                const float amount = value(hostIndex(par::MatVal1 + i, layer));
                if (source != 0 || destination != 0 || amount != 0.5f) rows.push_back({layer, i, source, destination, amount});
            }
        return rows;
    }
    golden::json map() {
        golden::json rows = golden::json::array();
        for (int cc = 0; cc < 128; ++cc)
            if (const int parameter = rig.audio.controllerMap().get(cc); parameter != ControllerMap::none)
                rows.push_back({cc, parameter});
        return rows;
    }
    golden::json boxes() const {
        golden::json rows = golden::json::array();
        for (const auto& box : dialogs.boxes()) rows.push_back({box.isQuestion ? "question" : "message", box.title, box.text});
        return rows;
    }
};

// Null for none.
inline golden::json orNull(const std::optional<int>& number) { return number ? golden::json(*number) : golden::json(nullptr); }

}  // namespace vantoric::test

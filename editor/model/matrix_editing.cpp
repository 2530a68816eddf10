#include "editor/model/matrix_editing.h"

#include <algorithm>

#include "base/numbers.h"
#include "parameters/label_lists.h"
#include "patch/patch_reset.h"
#include "voice/matrix.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr int destinationRows = 97;
constexpr float noAmount = 0.5f;
constexpr int slotsPerPage = 5;

// Rows of a submenu that lead to sources which follow one another.
struct TagRange {
    int first, last;  // tags
    int source;       // of the first
    bool hasBipolarAmount;
};
constexpr TagRange tagRanges[] = {
    {lfoRows, lfoRows, 50, false},
    {lfoRows + 1, lfoRows + 1, 2, true},
    {lfoRows + 2, lfoRows + 2, 51, false},
    {lfoRows + 3, lfoRows + 3, 3, true},
    {lfoRows + 4, lfoRows + 4, 52, false},
    {lfoRows + 5, lfoRows + 5, 4, true},
    {lfoRows + 6, lfoRows + 6, 5, false},
    {lfoRows + 7, lfoRows + 7, 6, true},
    {freeLfoRows, freeLfoRows + 16, 54, true},
    {envelopeRows, envelopeRows + 3, 7, false},
    {envelopeRows + 4, envelopeRows + 15, 37, false},  // the decays
    {midiRows, midiRows, 17, true},                    // the key
    {midiRows + 1, midiRows + 2, 18, false},
    {midiRows + 3, midiRows + 3, 20, true},  // the pitch wheel
    {midiRows + 4, midiRows + 14, 21, false},
    {randomRows, randomRows + 2, 13, true},
};

// Amounts that point into the free part of the knob's range.
float bipolarAmount(float value) {
    if (value < 0.1f || value > 0.9f) return 1.0f - value;
    return value >= 0.5f ? (1.0f - value) + 0.5f : 0.5f - value;
}
float unipolarAmount(float value) { return value >= 0.8f ? 0.5f - value * 0.5f : (1.0f - value) * 0.5f + 0.5f; }

const char* sourceLabel(int source) {
    return static_cast<std::size_t>(source) < matrixSourceLabels.size() ? matrixSourceLabels[static_cast<std::size_t>(source)]
                                                                        : "";
}

}  // namespace

int destinationOf(int number) {
    for (int index = 1; index < destinationRows; ++index)
        if (number > 0 && destinationNumber(index) == number) return index;
    return 0;
}

bool isBipolarSource(int source) {
    static constexpr int single[] = {2, 3, 4, 6, 13, 14, 15, 17, 20, 22};
    return std::find(std::begin(single), std::end(single), source) != std::end(single) || (source >= 54 && source <= 70);
}

SubmenuSource submenuSource(int tag) {
    for (const TagRange& range : tagRanges)
        if (tag >= range.first && tag <= range.last) return {range.source + tag - range.first, range.hasBipolarAmount};
    return {2, false};
}

int dragSource(DragSection section, int tab) {
    const int held = clampTo(tab, 0, 3);
    if (section == DragSection::envelope) return 7 + held;
    return held == 3 ? 5 : 50 + held;
}

MatrixEditing::Slot MatrixEditing::slotAt(int slot, int layer) const {
    return {parameters_.getListIndex(hostIndex(par::MatSrc1 + slot, layer)),
            parameters_.getListIndex(hostIndex(par::MatDst1 + slot, layer))};
}

KnobModulations MatrixEditing::updateKnobModulation() const {
    KnobModulations knobs{};
    for (int i = matrixSlotCount - 1; i >= 0; --i) {
        const Slot slot = slotAt(i, onShow_.layer);
        const int number = destinationNumber(slot.destination);
        if (slot.source == 0 || number == 0) continue;
        KnobModulation& knob = knobs[static_cast<std::size_t>(number)];
        knob.modBipolar = isBipolarSource(slot.source);
        knob.modDepth = 2.0f * parameters_.getParameter(hostIndex(par::MatVal1 + i, onShow_.layer)) - 1.0f;
        ++knob.modCount;
        knob.modNames = sourceLabel(slot.source);
        knob.source = slot.source;
    }
    return knobs;
}

std::optional<int> MatrixEditing::addModulation(int number, int tag) {
    if (tag < 0) return {};
    const SubmenuSource row = submenuSource(tag);
    return add(number, row.source, row.hasBipolarAmount);
}

std::optional<int> MatrixEditing::addDroppedModulation(int number, int source) { return add(number, source, false); }

std::optional<int> MatrixEditing::add(int number, int source, bool hasBipolarAmount) {
    const int destination = number == par::Modwheel ? 0 : destinationOf(number);
    if (destination == 0) return {};
    cleanMatrix();
    const auto slot = freeSlot({source, destination});
    if (!slot) {
        dialogs_.message("Error", "There are no free matrix slots available.");
        return {};
    }
    const float value = parameters_.getParameter(hostIndex(number, onShow_.layer));
    const float amount = hasBipolarAmount ? bipolarAmount(value) : unipolarAmount(value);
    forLayers([&](int layer) {
        edits_.write(hostIndex(par::MatDst1 + *slot, layer), listValue(destination));
        edits_.write(hostIndex(par::MatSrc1 + *slot, layer), listValue(source));
        edits_.write(hostIndex(par::MatVal1 + *slot, layer), amount);
    });
    return std::min(*slot / slotsPerPage + 1, 3);
}

// The one with the same source and destination, else the first that is empty.
std::optional<int> MatrixEditing::freeSlot(const Slot& wanted) const {
    std::optional<int> free;
    for (int i = matrixSlotCount - 1; i >= 0; --i) {
        const Slot slot = slotAt(i, onShow_.layer);
        if (slot.source == 0 && slot.destination == 0) free = i;
    }
    for (int i = matrixSlotCount - 1; i >= 0; --i) {
        const Slot slot = slotAt(i, onShow_.layer);
        if (slot.source == wanted.source && slot.destination == wanted.destination) free = i;
    }
    return free;
}

bool MatrixEditing::aimsAt(int slot, int number) const {
    return number > 0 && destinationNumber(slotAt(slot, onShow_.layer).destination) == number;
}

void MatrixEditing::removeModulation(int number) {
    if (number == par::Volume) number = par::LayerVol;
    for (int i = 0; i < matrixSlotCount; ++i)
        if (aimsAt(i, number)) forLayers([&](int layer) { empty(i, layer); });
}

void MatrixEditing::cleanMatrix() {
    forUnusedMatrixSlots(parameters_, [this](int layer, int slot) { empty(slot, layer); });
}

void MatrixEditing::empty(int slot, int layer) {
    writeIfOther(hostIndex(par::MatSrc1 + slot, layer), 0.0f);
    writeIfOther(hostIndex(par::MatDst1 + slot, layer), 0.0f);
    writeIfOther(hostIndex(par::MatVal1 + slot, layer), noAmount);
}

// Who follows the changes hears of those that there are.
void MatrixEditing::writeIfOther(int index, float value) {
    if (parameters_.getParameter(index) != value) edits_.write(index, value);
}

void MatrixEditing::beginDepth(int number) {
    endDepth();
    for (int i = 0; i < matrixSlotCount; ++i) {
        if (!aimsAt(i, number) || slotAt(i, onShow_.layer).source == 0) continue;
        forLayers([&](int layer) {
            const int index = hostIndex(par::MatVal1 + i, layer);
            dragged_[static_cast<std::size_t>(draggedCount_++)] = {index, parameters_.getParameter(index)};
            edits_.begin(index);
        });
        return;
    }
}

void MatrixEditing::dragDepth(float amount) {
    for (int i = 0; i < draggedCount_; ++i) edits_.set(dragged_[static_cast<std::size_t>(i)].index, clampUnit(amount));
}

void MatrixEditing::endDepth() {
    for (int i = 0; i < draggedCount_; ++i) edits_.end(dragged_[static_cast<std::size_t>(i)].index);
    draggedCount_ = 0;
}

void MatrixEditing::cancelDepth() {
    for (int i = 0; i < draggedCount_; ++i) {
        const Dragged& dragged = dragged_[static_cast<std::size_t>(i)];
        edits_.set(dragged.index, dragged.before);
    }
    endDepth();
}

}  // namespace vantoric

// Which pages of the window show, as the selectors and the oscillators' types have it.
#pragma once

#include "editor/model/control_table.h"
#include "library/on_show.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// On the thread of the window.
class Pages {
public:
    // The first pages show. Both must outlive it; selecting a layer changes `onShow`.
    Pages(const ParameterModel& parameters, OnShow& onShow) : parameters_(parameters), onShow_(onShow) {}

    // Shows the page or layer of a selector's tag. False, with nothing done, for any other tag.
    bool select(int tag);

    // Shows the first page of every section; the layer stays.
    void showFirstPages();

    // Whether the selector of that tag is on; false for any other tag.
    bool isSelected(int tag) const;

    // Whether a page (of namespace page) shows now.
    bool isShown(int page) const;

    // What is selected, from 0: of four envelopes, of three LFOs and the step LFO, of three pages of the matrix, of two
    // insert effects.
    int envelope() const { return envelope_; }
    int lfo() const { return lfo_; }
    int matrix() const { return matrix_; }
    int insert() const { return insert_; }

    // The page of an oscillator (0 to 2) while its type is that list index; 0 for an index that is no type.
    static int pageOfSynthesis(int oscillator, int type);

private:
    const ParameterModel& parameters_;
    OnShow& onShow_;
    int envelope_ = 0, lfo_ = 0, matrix_ = 0, insert_ = 0;
};

}  // namespace vantoric

#include "editor/model/pages.h"

#include "base/numbers.h"
#include "base/parameters.h"

namespace vantoric {

namespace {

// The matrix's third selector came later and has a tag of its own.
int matrixPageOfTag(int tag) {
    switch (tag) {
        case tag::matrixPage1: return 0;
        case tag::matrixPage2: return 1;
        case tag::matrixPage3: return 2;
        default: return -1;
    }
}

}  // namespace

bool Pages::select(int tag) {
    if (isOneOf(tag, tag::layer1, 4))
        onShow_.layer = tag - tag::layer1;
    else if (isOneOf(tag, tag::envelopePage1, 4))
        envelope_ = tag - tag::envelopePage1;
    else if (isOneOf(tag, tag::lfoPage1, 4))
        lfo_ = tag - tag::lfoPage1;
    else if (isOneOf(tag, tag::insertPage1, 2))
        insert_ = tag - tag::insertPage1;
    else if (matrixPageOfTag(tag) >= 0)
        matrix_ = matrixPageOfTag(tag);
    else
        return false;
    return true;
}

void Pages::showFirstPages() { envelope_ = lfo_ = matrix_ = insert_ = 0; }

bool Pages::isSelected(int tag) const {
    return tag == tag::layer1 + onShow_.layer || tag == tag::envelopePage1 + envelope_ || tag == tag::lfoPage1 + lfo_ ||
           tag == tag::insertPage1 + insert_ || matrixPageOfTag(tag) == matrix_;
}

int Pages::pageOfSynthesis(int oscillator, int type) {
    // By the order of the types' list.
    static constexpr int pages[] = {page::wavetable1, page::hypersaw1, page::noise1, page::sample1, page::custom1, page::analog1};
    if (type < 0 || type >= static_cast<int>(std::size(pages))) return 0;
    return pages[type] + page::perOscillator * oscillator;
}

bool Pages::isShown(int page) const {
    if (page == page::always || page == page::layer) return true;
    if (page >= page::insert1) return page == page::insert1 + insert_;
    if (page >= page::matrix1) return page == page::matrix1 + matrix_;
    if (page >= page::lfo1) return page == page::lfo1 + lfo_;
    if (page >= page::envelope1) return page == page::envelope1 + envelope_;
    const int oscillator = clampTo((page - page::sample1) / page::perOscillator, 0, 2);
    const int type = parameters_.getListIndex(parameter::SynType1 + oscillator + layerParameterStride * onShow_.layer);
    return page == pageOfSynthesis(oscillator, type);
}

}  // namespace vantoric

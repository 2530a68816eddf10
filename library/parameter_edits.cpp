#include "library/parameter_edits.h"

#include <algorithm>

namespace vantoric {
namespace {

bool isParameter(int index) { return index >= 0 && index < parameterCount; }

}  // namespace

float ParameterEdits::valueOf(int index) const { return instrument_.parameters().getParameter(index); }

void ParameterEdits::begin(int index) {
    if (!isParameter(index)) return;
    if (listener_ != nullptr) listener_->editBegan(index, valueOf(index));
    if (host() != nullptr) host()->editBegun(index);
}

void ParameterEdits::set(int index, float value) {
    if (!isParameter(index)) return;
    write(index, value);
    if (host() != nullptr) host()->parameterEdited(index, valueOf(index));
}

void ParameterEdits::end(int index) {
    if (!isParameter(index)) return;
    if (host() != nullptr) host()->editEnded(index);
    if (listener_ != nullptr) listener_->editEnded(index, valueOf(index));
}

void ParameterEdits::change(int index, float value) {
    begin(index);
    set(index, value);
    end(index);
}

void ParameterEdits::write(int index, float value) {
    if (!isParameter(index) || !(value >= 0.0f)) return;
    const float before = valueOf(index);
    instrument_.setParameter(index, std::min(value, 1.0f), ChangeSource::window);
    if (listener_ != nullptr) listener_->valueWritten(index, before);
}

}  // namespace vantoric

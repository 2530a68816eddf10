// How a user's hand changes parameters: in gestures that have a beginning and an end, which the host is told of and
// which a history can take back as one step.
#pragma once

#include "engine/instrument.h"

namespace vantoric {

// Follows the gestures; called on their thread.
class EditListener {
public:
    // Parameter `index` is about to be changed from `value`. Always before the first change of a gesture.
    virtual void editBegan(int index, float value) = 0;
    // The gesture ended with `value`.
    virtual void editEnded(int index, float value) = 0;
    // Parameter `index`, which was `before`, was written; with or without a gesture.
    virtual void valueWritten(int index, float before) { static_cast<void>(index), static_cast<void>(before); }

protected:
    ~EditListener() = default;
};

// On the thread of the window. Indices are host indices, 0 to 1223, others are ignored; values are held to 0 to 1.
class ParameterEdits {
public:
    explicit ParameterEdits(Instrument& instrument) : instrument_(instrument) {}

    // A gesture: any number of `set` between `begin` and `end`. Gestures on several parameters may overlap.
    void begin(int index);
    void set(int index, float value);
    void end(int index);
    // A gesture of one change.
    void change(int index, float value);
    // A change that the host is not told of by itself, as a part of a command.
    void write(int index, float value);

    // Null for none.
    void setListener(EditListener* listener) { listener_ = listener; }

private:
    float valueOf(int index) const;
    HostPort* host() const { return instrument_.hostPort(); }

    Instrument& instrument_;
    EditListener* listener_ = nullptr;
};

}  // namespace vantoric

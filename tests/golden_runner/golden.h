// Numeric vectors and their bindings. A binding feeds a case's input to the instrument's own functions;
// nothing in it may depend on the values of a particular file, as the same kinds come with other values.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "golden_runner/watched.h"

namespace golden {

struct Case {
    std::string name;                 // "kind/name" or whatever the file calls it
    std::string area;                 // of its binding: "modulation"
    std::string stem;                 // the file's name without a trailing _1, _2 or _partN and without its ending
    json input, expected, tolerance;  // watched
    json whole;                       // the case as it stands in the file
    std::string folder;               // of the file, for cases that refer to another file
};

// What a case came to. `worst` is the largest ratio of a deviation to its allowance: above 1 fails.
struct Outcome {
    bool passed = true;
    double worst = 0.0;
    std::string message;  // the first thing that was wrong

    void fail(const std::string& what) {
        if (passed) message = what;
        passed = false;
    }
    // Counts one number; `where` names it in a message.
    void number(double got, double expected, double abs, double rel, const std::string& where);
};

// Fails a case that says something which its binding did not ask for: a key of input, expected or tolerance that was not
// read, or an unknown one beside them. Commentary is let pass.
void requireAllRead(const Case& c, Outcome& outcome);

// Compares `got` with `expected` value by value. Every key and element of `expected` must be in `got`;
// got may hold more. Tolerance: {"abs", "rel"} for all, or such a pair per field of an object.
Outcome compare(const json& expected, const json& got, const json& tolerance);
void compareInto(Outcome& outcome, const json& expected, const json& got, const json& tolerance, const std::string& where);

using Check = Outcome (*)(const Case&);

// Registers `check` for an area ("modulation") and a file stem ("envelopes"; a trailing * matches any rest,
// the longest match wins). Static objects of this type in the binding files fill the table.
struct Binding {
    Binding(const char* area, const char* stem, Check check);
};

// Finds the check for a file. `area` is "" if the folder does not tell it. Null if there is none.
Check findCheck(const std::string& area, const std::string& stem);
bool isArea(const std::string& name);

// Bindings that only compute: register with checkValues<function>, function(const Case&) -> json shaped
// like `expected`.
template <json (*values)(const Case&)>
Outcome checkValues(const Case& c) {
    return compare(c.expected, values(c), c.tolerance);
}

// A number of the file as a float, as the instrument would hold it.
inline float asFloat(const json& j) { return static_cast<float>(j.get<double>()); }

}  // namespace golden

// The controls of the window: what each is, what it is bound to, where it stands and what it says. One static table from
// which the whole window is built; nothing about a control's place or text is written elsewhere. Constant; any thread but
// the audio thread.
#pragma once

#include <string>

#include "parameters/label_lists.h"
#include "parameters/value_formatters.h"

namespace vantoric {

inline constexpr int controlTotal = 311;

// Size of the small layout, in whose units all places are given; the normal one multiplies by 1.5.
inline constexpr int layoutWidth = 1200, layoutHeight = 660;
inline constexpr int bandHeight = 128;  // the band at the top, which the low sizes show alone
inline constexpr int coreWidth = 802;   // of the band, as far as the narrow sizes show it

enum class WidgetKind : int {
    Knob = 1,
    LargeKnob = 2,
    Switch = 3,    // on and off
    Selector = 4,  // of a page or layer
    Button = 5,    // a command
    LargeList = 6,
    List = 7,
    SmallList = 8,
    Menu = 9,
    Value = 10,        // text, dragged up and down
    Step = 11,         // a vertical slider
    EffectValue = 14,  // as Value; the effect writes the text
    WaveView = 15,
    FilterView = 16,    // its frequency response
    SampleButton = 17,  // loads or edits
    EnvelopeView = 18,
    LfoView = 19,
};

// The function of a control, by which it has its colour.
enum class Section { Oscillators, Filters, Envelopes, Lfo, Matrix, Arpeggiator, Output };

// When a control shows.
namespace page {
// clang-format off
enum Number : int {
    always = 1,
    layer = 2,  // belongs to the layer on show
    // An oscillator's while it has this type of synthesis.
    sample1 = 3,  custom1,  noise1,  wavetable1,  hypersaw1,  analog1,
    sample2 = 11, custom2,  noise2,  wavetable2,  hypersaw2,  analog2,
    sample3 = 19, custom3,  noise3,  wavetable3,  hypersaw3,  analog3,
    // While its selector is on.
    envelope1 = 27, envelope2, envelope3, envelope4,  // volume, filter, aux 1, aux 2
    lfo1 = 31, lfo2, lfo3, stepLfo,
    matrix1 = 35, matrix2, matrix3,  // slots 1 to 5, 6 to 10, 11 to 15
    insert1 = 38, insert2,
};
// clang-format on
inline constexpr int perOscillator = 8;  // from an oscillator's pages to the next one's
inline constexpr int last = insert2;
}  // namespace page

// Tags from 1224 on: what is no parameter. A family is named by its first member; the others follow it directly unless
// said otherwise.
namespace tag {
enum Number : int {
    previousPatch = 1225,
    nextPatch = 1226,
    fileMenu = 1227,
    favourite = 1228,
    copyMenu = 1229,
    pasteMenu = 1230,
    initMenu = 1231,
    editorMenu = 1232,
    helpMenu = 1233,
    insertPage1 = 1234,
    layer1 = 1236,
    envelopePage1 = 1242,
    matrixPage1 = 1246,
    matrixPage2 = 1247,
    lfoPage1 = 1248,  // the fourth is the step LFO's
    waveView1 = 1252,
    filterView1 = 1255,
    envelopeView = 1257,
    lfoView = 1258,
    sampleLoad1 = 1259,  // + 2 an oscillator
    sampleEdit1 = 1260,  // + 2 an oscillator
    waveMenu1 = 1265,
    lfoSpeedText1 = 1268,  // the fourth is the step LFO's
    categoryList = 1274,
    patchList = 1275,
    browser = 1281,
    shop = 1282,
    modWheel = 1289,
    pitchWheel = 1290,
    zoomMenu = 1352,
    matrixPage3 = 1353,
};
}  // namespace tag

// Whether a tag or parameter is among the `count` from `first` on.
constexpr bool isOneOf(int tag, int first, int count) { return tag >= first && tag < first + count; }

struct ControlEntry {
    WidgetKind kind;
    int tag;           // below 1224 a parameter number, within the layer on show for those of layers; else of namespace tag
    const char* name;  // in the hint line; upper case, at most 63 bytes; some stand twice
    int x, y;          // of knobs the centre, of all others the upper left corner
    int width, height;
    float defaultValue;     // what "Reset to default value" restores
    int page;               // of namespace page
    LabelList labels;       // of lists and menus with fixed rows; else empty
    ValueFormatter format;  // of fields; else null
    std::string tooltip;    // at most 303 bytes; lines end in newlines
    const char* caption;    // beneath a knob, on a selector, switch or menu; UTF-8, may be empty
    Section section;
    bool bipolar;  // the arc or bar begins in the middle
};

// 311.
int controlCount();

// The control of that row; an index outside has the first one's.
const ControlEntry& controlEntry(int index);

// The first row with that tag; -1 for none.
int controlIndexForTag(int tag);

// The first row with that name; -1 for none.
int controlIndexForName(const char* name);

// Whether the control is a knob of either size.
bool isKnob(const ControlEntry& entry);
// Whether it shows one of a list of labels.
bool isList(const ControlEntry& entry);
// The list of an oscillator's waves.
bool isWaveMenu(const ControlEntry& entry);

// The parameter number that controls of that tag write, 0 to 323; -1 for those that write none. The speed texts write the
// speed that they show, the wheel on the screen the modulation wheel.
int parameterOfTag(int tag);

// The host index that they write while `layer` (0 to 3, held to that) is shown; -1 for none. Numbers below 24 are the same
// for all layers.
int hostIndexOfTag(int tag, int layer);

}  // namespace vantoric

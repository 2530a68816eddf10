#include "editor/model/control_table.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/engine_state.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "parameters/parameter_table.h"

namespace vantoric {

namespace {

// What a row says itself; the rest follows from its kind and its parameter.
struct Row {
    WidgetKind kind;
    int tag;
    const char* name;
    int x, y;
    page::Number page;
    Section section;
    const char* caption;
    const char* tooltip;  // '#' is the first digit of the name; fields get a last line about their gesture
};

using enum WidgetKind;
using namespace page;

constexpr Section Osc = Section::Oscillators, Fil = Section::Filters, Env = Section::Envelopes, Lfo = Section::Lfo;
constexpr Section Mtx = Section::Matrix, Arp = Section::Arpeggiator, Out = Section::Output;

constexpr const char* dragLine = "Click and move the mouse up/down to change the value.";

constexpr const char* waveTip =
    "Waveform display of Osc#\n"
    "In sample-playback-mode: Left-click and move the mouse to set the loop-points";
constexpr const char* shopTip = "Visit www.vantoric.example";
constexpr const char* playModeTip =
    "Monophonic: Like an analog synth with 1 voice. The oscs do not retrigger on overlapping notes.\n"
    "Legato: Like Mono, but if a second key is pressed the synth will glide to the new note with the speed defined in Glide.\n"
    "Polyphonic: Defines the maximum number of voices. The oscs retrigger on note-on.";
constexpr const char* soundModeTip =
    "Selects the type of psychoacoustic processing.\n"
    "'Dynamic' adds more bass without boosting the volume.\n"
    "'Transient' adds punch to the attack phase.\n"
    "'Linear' does not alter the sound.\n"
    "'Loudness' boosts bass and treble.";
constexpr const char* microtuneTip =
    "Select the microtuning-mode here.\n"
    "Well-temp is the default tuning without microtuning.\n"
    "Analog creates analog-drift for the oscillators.\n"
    "Fat enhances chords dynamically.\n"
    "Just is an extreme setting which completely removes beating from chords.";
constexpr const char* qualityTip =
    "Selects the sound-quality and playback-mode.\n"
    "If Crossblend PW is used the wavetables of the oscillators will be crossblended smoothly.";
constexpr const char* lfoModeTip =
    "Free will synchronize it with the song-position.\n"
    "Trigger will restart it after a key-press.\n"
    "Key plays high notes with a higher speed and low notes with a lower speed.\n"
    "Mono retriggers only after the first key-press.";
constexpr const char* stepModeTip =
    "Free will synchronize it with the song-position.\n"
    "Trigger will restart it after a key-press.\n"
    "Mono retriggers only after the first key-press.\n"
    "Envelope disables looping.";
constexpr const char* arpTypeTip =
    "Select the arpeggior-type here\n"
    "Chordgate plays all pressed keys at once\n"
    "Stack disables the arpeggiator und plays the chord you selected\n"
    "Root disables the arpeggiator und plays the root key ";
constexpr const char* arpChordTip =
    "If this value ist set to a chord, the arpeggiator will generate additonal keys automatically.";
constexpr const char* arpRetriggerTip =
    "Trigger will restart the apreggiator after a key-press.\n"
    "Song will synchronize the apreggiator with the song-position.";
constexpr const char* arpSwingTip = "Swing will delay every 2nd and 3rd step to create a groove.";
constexpr const char* stepNoteTip =
    "Setup the note or pitch events here\n\n"
    "Numbers: Semitones\n"
    "\\: Glide X semitones down\n"
    "/: Glide X semitones up\n"
    "3/4: Play a minor or major Third";
constexpr const char* stepVelocityTip =
    "Setup velocity or special events here\n\n"
    ". : Continue playing\n"
    "1-8: Velocity of the step\n"
    "R: RELEASE note\n"
    "L: When LOOP is reached the Arp jumps to Step1\n"
    "E: END of the loop\n"
    "S: Forces a SORTING of the notes";
constexpr const char* oscillatorStartTip =
    "Changes the start point of Osc#. \n"
    "Setting it to 100 enables 'Free'-mode which triggers the osc with a random phase.";
constexpr const char* lfoStartTip =
    "Adjusts the start-phase of Lfo#.\n"
    "Setting it to 100 enables 'Free'-mode with starts the LFO with a random phase";

// clang-format off
constexpr Row rows[] = {
    // Wave displays and switches
    {WaveView, 1252, "WAVE 1",          76, 160, layer,  Osc, "",       waveTip},
    {WaveView, 1253, "WAVE 2",          76, 254, layer,  Osc, "",       waveTip},
    {WaveView, 1254, "WAVE 3",          76, 348, layer,  Osc, "",       waveTip},
    {Switch,     93, "OSC12 SYNC",      22, 226, layer,  Osc, "Sync",   "Syncs oscillator 2 to oscillator 1"},
    {Switch,     94, "OSC23 SYNC",      22, 320, layer,  Osc, "Sync",   "Syncs oscillator 3 to oscillator 2"},
    {Switch,     42, "OSC1 ON",         22, 174, layer,  Osc, "On",     "Switches oscillator 1 on and off"},
    {Switch,     43, "OSC2 ON",         22, 268, layer,  Osc, "On",     "Switches oscillator 2 on and off"},
    {Switch,     44, "OSC3 ON",         22, 362, layer,  Osc, "On",     "Switches oscillator 3 on and off"},
    {Switch,    117, "FILTER12 ROUTE", 952, 270, layer,  Fil, "Serial", "Switches the filters from parallel to serial"},
    {Switch,     11, "SYNT1 ON",       412,  60, always, Out, "On",     "Switches synth layer 1 on and off"},
    {Switch,     12, "SYNT2 ON",       460,  60, always, Out, "On",     "Switches synth layer 2 on and off"},
    {Switch,     13, "SYNT3 ON",       508,  60, always, Out, "On",     "Switches synth layer 3 on and off"},
    {Switch,     14, "SYNT4 ON",       556,  60, always, Out, "On",     "Switches synth layer 4 on and off"},
    // Layer and page selectors
    {Selector, 1236, "SYNTH 1 SELECT",                406,   8, always, Out, "1",      "Shows synth layer 1"},
    {Selector, 1237, "SYNTH 2 SELECT",                454,   8, always, Out, "2",      "Shows synth layer 2"},
    {Selector, 1238, "SYNTH 3 SELECT",                502,   8, always, Out, "3",      "Shows synth layer 3"},
    {Selector, 1239, "SYNTH 4 SELECT",                550,   8, always, Out, "4",      "Shows synth layer 4"},
    {Selector, 1242, "VOLUME ENVELOPE SELECT",        106, 426, always, Env, "Volume", "Shows the volume envelope"},
    {Selector, 1243, "FILTER ENVELOPE SELECT",        154, 426, always, Env, "Filter", "Shows the filter envelope"},
    {Selector, 1244, "AUX ENVELOPE 1 SELECT",         202, 426, always, Env, "Aux 1",  "Shows the aux 1 envelope"},
    {Selector, 1245, "AUX ENVELOPE 2 SELECT",         250, 426, always, Env, "Aux 2",  "Shows the aux 2 envelope"},
    {Selector, 1246, "MOD MATRIX SLOT 1-5 SELECT",    898, 426, always, Mtx, "1–5",    "Shows matrix slots 1 to 5"},
    {Selector, 1247, "MOD MATRIX SLOT 6-10 SELECT",   946, 426, always, Mtx, "6–10",   "Shows matrix slots 6 to 10"},
    {Selector, 1353, "MOD MATRIX SLOT 11-15 SELECT",  994, 426, always, Mtx, "11–15",  "Shows matrix slots 11 to 15"},
    {Selector, 1248, "LFO 1 SELECT",                  502, 426, always, Lfo, "LFO 1",  "Shows LFO 1"},
    {Selector, 1249, "LFO 2 SELECT",                  550, 426, always, Lfo, "LFO 2",  "Shows LFO 2"},
    {Selector, 1250, "LFO 3 SELECT",                  598, 426, always, Lfo, "LFO 3",  "Shows LFO 3"},
    {Selector, 1251, "STEP LFO SELECT",               646, 426, always, Lfo, "Step",   "Shows the step LFO"},
    {Selector, 1234, "INSERT FX1 SELECT",            1088, 284, always, Out, "FX 1",   "Shows insert effect 1"},
    {Selector, 1235, "INSERT FX2 SELECT",            1136, 284, always, Out, "FX 2",   "Shows insert effect 2"},
    // Command buttons
    {Button, 1225, "PREVIOUS PATCH",     342, 38, always, Out, "",         "Loads the previous patch"},
    {Button, 1226, "NEXT PATCH",         368, 38, always, Out, "",         "Loads the next patch"},
    {Button, 1281, "OPEN PATCH BROWSER",  14, 38, always, Out, "",         "Opens and closes the patch browser"},
    {Button, 1282, "VISIT THE SHOP",       8,  8, always, Out, "VANTORIC", shopTip},
    // Lists with a large caption
    {LargeList,    5, "MASTER FX TYPE",      874,  12, always,     Out, "", "Selects the Master effect type"},
    {LargeList,   60, "SYNTHESIS OSC1",       76, 142, layer,      Osc, "", "Selects the synthesis type of oscillator 1"},
    {LargeList,   61, "SYNTHESIS OSC2",       76, 236, layer,      Osc, "", "Selects the synthesis type of oscillator 2"},
    {LargeList,   62, "SYNTHESIS OSC3",       76, 330, layer,      Osc, "", "Selects the synthesis type of oscillator 3"},
    {LargeList,   63, "WAVE OSC1",            76, 200, wavetable1, Osc, "", "Selects the wavetable of oscillator 1"},
    {LargeList,   64, "WAVE OSC2",            76, 294, wavetable2, Osc, "", "Selects the wavetable of oscillator 2"},
    {LargeList,   65, "WAVE OSC3",            76, 388, wavetable3, Osc, "", "Selects the wavetable of oscillator 3"},
    {LargeList,   66, "OSCILLATORS 1",        76, 200, hypersaw1,  Osc, "", "Selects the hypersaw wave of oscillator 1"},
    {LargeList,   67, "OSCILLATORS 2",        76, 294, hypersaw2,  Osc, "", "Selects the hypersaw wave of oscillator 2"},
    {LargeList,   68, "OSCILLATORS 3",        76, 388, hypersaw3,  Osc, "", "Selects the hypersaw wave of oscillator 3"},
    {LargeList,   69, "NOISE TYPE 1",         76, 200, noise1,     Osc, "", "Selects the noise of oscillator 1"},
    {LargeList,   70, "NOISE TYPE 2",         76, 294, noise2,     Osc, "", "Selects the noise of oscillator 2"},
    {LargeList,   71, "NOISE TYPE 2",         76, 388, noise3,     Osc, "", "Selects the noise of oscillator 3"},
    {LargeList,  134, "ANALOG OSC 1",         76, 200, analog1,    Osc, "", "Selects the analog wave of oscillator 1"},
    {LargeList,  135, "ANALOG OSC 2",         76, 294, analog2,    Osc, "", "Selects the analog wave of oscillator 2"},
    {LargeList,  136, "ANALOG OSC 2",         76, 388, analog3,    Osc, "", "Selects the analog wave of oscillator 3"},
    {LargeList,  121, "INS FX1 TYPE",       1006, 308, insert1,    Out, "", "Selects the type of insert effect 1"},
    {LargeList,  269, "INS FX2 TYPE",       1006, 308, insert2,    Out, "", "Selects the type of insert effect 2"},
    {LargeList,  128, "PLAY MODE",          1054, 146, layer,      Out, "", playModeTip},
    {LargeList,   22, "PW RANGE",            464,  84, always,     Out, "", "Selects the range of the pitch wheel"},
    {LargeList,  130, "VEL RANGE",          1054, 216, layer,      Out, "", "Selects the velocities the layer plays"},
    {LargeList,   19, "SOUND MODE",           62,  84, always,     Out, "", soundModeTip},
    {LargeList,   20, "MICROTUNE",           196,  84, always,     Out, "", microtuneTip},
    {LargeList,   21, "QUALITY",             330,  84, always,     Out, "", qualityTip},
    {LargeList,  131, "LAYER SPLIT",        1054, 194, layer,      Out, "", "Selects the keys the layer plays"},
    {LargeList, 1265, "OSC1 LOAD",            76, 200, custom1,    Osc, "", "Loads and saves the custom wave of oscillator 1"},
    {LargeList, 1266, "OSC2 LOAD",            76, 294, custom2,    Osc, "", "Loads and saves the custom wave of oscillator 2"},
    {LargeList, 1267, "OSC3 LOAD",            76, 388, custom3,    Osc, "", "Loads and saves the custom wave of oscillator 3"},
    {LargeList,  127, "MIDI CHANNEL SPLIT", 1054, 238, layer,      Out, "", "Selects the Midi channel the layer plays"},
    {LargeList,  140, "LFO1 WAVE",           414, 516, lfo1,       Lfo, "", "Selects the waveform of LFO 1"},
    {LargeList,  141, "LFO2 WAVE",           414, 516, lfo2,       Lfo, "", "Selects the waveform of LFO 2"},
    {LargeList,  142, "LFO3 WAVE",           414, 516, lfo3,       Lfo, "", "Selects the waveform of LFO 3"},
    {LargeList,  154, "STEP SHAPE",          414, 516, stepLfo,    Lfo, "", "Selects the shape of the steps"},
    {LargeList,  146, "LFO1 MODE",           414, 536, lfo1,       Lfo, "", lfoModeTip},
    {LargeList,  147, "LFO2 MODE",           414, 536, lfo2,       Lfo, "", lfoModeTip},
    {LargeList,  148, "LFO3 MODE",           414, 536, lfo3,       Lfo, "", lfoModeTip},
    // Lists
    {List, 155, "LFO STEP MODE", 414, 536, stepLfo, Lfo, "", stepModeTip},
    {List, 204, "ARP TYPE",       18, 598, layer,   Arp, "", arpTypeTip},
    {List, 203, "ARP TEMPO",     138, 598, layer,   Arp, "", "Selects the tempo of the arpeggiator"},
    {List, 209, "ARP CHORD",      18, 622, layer,   Arp, "", arpChordTip},
    {List, 207, "ARP RETRIG",    258, 598, layer,   Arp, "", arpRetriggerTip},
    {List, 111, "FILTER1 TYPE",  630, 148, layer,   Fil, "", "Selects the type of filter 1"},
    {List, 112, "FILTER2 TYPE",  630, 290, layer,   Fil, "", "Selects the type of filter 2"},
    // Modulation matrix: sources and destinations
    {List, 275, "MOD SOURCE1",   830, 450, matrix1, Mtx, "", "Modulation source of slot 1."},
    {List, 291, "MOD DEST1",    1068, 450, matrix1, Mtx, "", "Modulation destination of slot 1."},
    {List, 276, "MOD SOURCE2",   830, 472, matrix1, Mtx, "", "Modulation source of slot 2."},
    {List, 292, "MOD DEST2",    1068, 472, matrix1, Mtx, "", "Modulation destination of slot 2."},
    {List, 277, "MOD SOURCE3",   830, 494, matrix1, Mtx, "", "Modulation source of slot 3."},
    {List, 293, "MOD DEST3",    1068, 494, matrix1, Mtx, "", "Modulation destination of slot 3."},
    {List, 278, "MOD SOURCE4",   830, 516, matrix1, Mtx, "", "Modulation source of slot 4."},
    {List, 294, "MOD DEST4",    1068, 516, matrix1, Mtx, "", "Modulation destination of slot 4."},
    {List, 279, "MOD SOURCE5",   830, 538, matrix1, Mtx, "", "Modulation source of slot 5."},
    {List, 295, "MOD DEST5",    1068, 538, matrix1, Mtx, "", "Modulation destination of slot 5."},
    {List, 280, "MOD SOURCE6",   830, 450, matrix2, Mtx, "", "Modulation source of slot 6."},
    {List, 296, "MOD DEST6",    1068, 450, matrix2, Mtx, "", "Modulation destination of slot 6."},
    {List, 281, "MOD SOURCE7",   830, 472, matrix2, Mtx, "", "Modulation source of slot 7."},
    {List, 297, "MOD DEST7",    1068, 472, matrix2, Mtx, "", "Modulation destination of slot 7."},
    {List, 282, "MOD SOURCE8",   830, 494, matrix2, Mtx, "", "Modulation source of slot 8."},
    {List, 298, "MOD DEST8",    1068, 494, matrix2, Mtx, "", "Modulation destination of slot 8."},
    {List, 283, "MOD SOURCE9",   830, 516, matrix2, Mtx, "", "Modulation source of slot 8."},
    {List, 299, "MOD DEST9",    1068, 516, matrix2, Mtx, "", "Modulation destination of slot 9."},
    {List, 284, "MOD SOURCE10",  830, 538, matrix2, Mtx, "", "Modulation source of slot 10."},
    {List, 300, "MOD DEST10",   1068, 538, matrix2, Mtx, "", "Modulation destination of slot 10."},
    {List, 285, "MOD SOURCE11",  830, 450, matrix3, Mtx, "", "Modulation source of slot 11."},
    {List, 301, "MOD DEST11",   1068, 450, matrix3, Mtx, "", "Modulation destination of slot 11."},
    {List, 286, "MOD SOURCE12",  830, 472, matrix3, Mtx, "", "Modulation source of slot 12."},
    {List, 302, "MOD DEST12",   1068, 472, matrix3, Mtx, "", "Modulation destination of slot 12."},
    {List, 287, "MOD SOURCE13",  830, 494, matrix3, Mtx, "", "Modulation source of slot 13."},
    {List, 303, "MOD DEST13",   1068, 494, matrix3, Mtx, "", "Modulation destination of slot 13."},
    {List, 288, "MOD SOURCE14",  830, 516, matrix3, Mtx, "", "Modulation source of slot 14."},
    {List, 304, "MOD DEST14",   1068, 516, matrix3, Mtx, "", "Modulation destination of slot 14."},
    {List, 289, "MOD SOURCE15",  830, 538, matrix3, Mtx, "", "Modulation source of slot 15."},
    {List, 305, "MOD DEST15",   1068, 538, matrix3, Mtx, "", "Modulation destination of slot 15."},
    // Small lists
    {SmallList,  113, "DISTORTION1 TYPE", 754, 242, layer,   Fil, "",     "Selects the distortion of filter 1"},
    {SmallList,  114, "DISTORTION2 TYPE", 754, 384, layer,   Fil, "",     "Selects the distortion of filter 2"},
    {SmallList,   54, "KEY START OSC1",   494, 202, layer,   Osc, "",     "Selects the lowest key oscillator 1 plays"},
    {SmallList,   55, "KEY START OSC2",   494, 296, layer,   Osc, "",     "Selects the lowest key oscillator 2 plays"},
    {SmallList,   56, "KEY START OSC3",   494, 390, layer,   Osc, "",     "Selects the lowest key oscillator 3 plays"},
    {SmallList,   57, "KEY END OSC1",     542, 202, layer,   Osc, "",     "Selects the highest key oscillator 1 plays"},
    {SmallList,   58, "KEY END OSC2",     542, 296, layer,   Osc, "",     "Selects the highest key oscillator 2 plays"},
    {SmallList,   59, "KEY END OSC3",     542, 390, layer,   Osc, "",     "Selects the highest key oscillator 3 plays"},
    {SmallList,   87, "OSC1 LOOP",        112, 202, sample1, Osc, "",     "Selects how the sample of oscillator 1 loops"},
    {SmallList,   88, "OSC2 LOOP",        112, 296, sample2, Osc, "",     "Selects how the sample of oscillator 2 loops"},
    {SmallList,   89, "OSC3 LOOP",        112, 390, sample3, Osc, "",     "Selects how the sample of oscillator 3 loops"},
    {SmallList, 1260, "OSC1 EDIT",        160, 202, sample1, Osc, "Edit", "Edits the sample of oscillator 1"},
    {SmallList, 1262, "OSC2 EDIT",        160, 296, sample2, Osc, "Edit", "Edits the sample of oscillator 2"},
    {SmallList, 1264, "OSC3 EDIT",        160, 390, sample3, Osc, "Edit", "Edits the sample of oscillator 3"},
    // Arpeggiator: notes and velocities
    {SmallList, 211, "ARP STEP 1 NOTE",       406, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 212, "ARP STEP 2 NOTE",       454, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 213, "ARP STEP 3 NOTE",       502, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 214, "ARP STEP 4 NOTE",       550, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 215, "ARP STEP 5 NOTE",       602, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 216, "ARP STEP 6 NOTE",       650, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 217, "ARP STEP 7 NOTE",       698, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 218, "ARP STEP 8 NOTE",       746, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 219, "ARP STEP 9 NOTE",       798, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 220, "ARP STEP 10 NOTE",      846, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 221, "ARP STEP 11 NOTE",      894, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 222, "ARP STEP 12 NOTE",      942, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 223, "ARP STEP 13 NOTE",      994, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 224, "ARP STEP 14 NOTE",     1042, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 225, "ARP STEP 15 NOTE",     1090, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 226, "ARP STEP 16 NOTE",     1138, 598, layer, Arp, "", stepNoteTip},
    {SmallList, 243, "ARP STEP 1 VELOCITY",   406, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 244, "ARP STEP 2 VELOCITY",   454, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 245, "ARP STEP 3 VELOCITY",   502, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 246, "ARP STEP 4 VELOCITY",   550, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 247, "ARP STEP 5 VELOCITY",   602, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 248, "ARP STEP 6 VELOCITY",   650, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 249, "ARP STEP 7 VELOCITY",   698, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 250, "ARP STEP 8 VELOCITY",   746, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 251, "ARP STEP 9 VELOCITY",   798, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 252, "ARP STEP 10 VELOCITY",  846, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 253, "ARP STEP 11 VELOCITY",  894, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 254, "ARP STEP 12 VELOCITY",  942, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 255, "ARP STEP 13 VELOCITY",  994, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 256, "ARP STEP 14 VELOCITY", 1042, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 257, "ARP STEP 15 VELOCITY", 1090, 622, layer, Arp, "", stepVelocityTip},
    {SmallList, 258, "ARP STEP 16 VELOCITY", 1138, 622, layer, Arp, "", stepVelocityTip},
    // Menus
    {Menu, 1232, "EDITOR",            304,  8, always, Out, "Editor", "Selects the size of the window"},
    {Menu, 1352, "EDITOR",           1138, 12, always, Out, "100%",   "Selects the size of the window"},
    {Menu, 1229, "COPY",              160,  8, always, Out, "Copy",   "Copies and stacks patches and layers"},
    {Menu, 1230, "PASTE",             208,  8, always, Out, "Paste",  "Pastes what has been copied"},
    {Menu, 1231, "INIT A NEW PATCH",  256,  8, always, Out, "Init",   "Resets the patch or starts a new one"},
    {Menu, 1227, "FILE",              112,  8, always, Out, "File",   "Loads, saves and imports patches"},
    {Menu, 1233, "HELP",              352,  8, always, Out, "Help",   "Tooltips, Midi assignments, manual and version"},
    // Value fields
    {Value,  48, "START OSC1",      400, 202, layer,   Osc, "", oscillatorStartTip},
    {Value,  49, "START OSC2",      400, 296, layer,   Osc, "", oscillatorStartTip},
    {Value,  50, "START OSC3",      400, 390, layer,   Osc, "", oscillatorStartTip},
    {Value,  72, "OSC1 SEMI",       214, 202, layer,   Osc, "", "Tunes oscillator 1 up in semitones."},
    {Value,  73, "OSC2 SEMI",       214, 296, layer,   Osc, "", "Tunes oscillator 2 up in semitones."},
    {Value,  74, "OSC3 SEMI",       214, 390, layer,   Osc, "", "Tunes oscillator 3 up in semitones."},
    {Value, 129, "GLIDE TIME",     1054, 168, layer,   Out, "", "Adjusts the speed of the glide."},
    {Value, 158, "STEP LFO STEPS",  694, 522, stepLfo, Lfo, "", "Adjusts the number of steps of the step LFO."},
    {Value, 210, "ARP SWING",       138, 624, layer,   Arp, "", arpSwingTip},
    // Modulation matrix: amounts
    {Value, 307, "MATRIX SEND1",  960, 452, matrix1, Mtx, "", "Amount of modulation in slot 1."},
    {Value, 308, "MATRIX SEND2",  960, 474, matrix1, Mtx, "", "Amount of modulation in slot 2."},
    {Value, 309, "MATRIX SEND3",  960, 496, matrix1, Mtx, "", "Amount of modulation in slot 3."},
    {Value, 310, "MATRIX SEND4",  960, 518, matrix1, Mtx, "", "Amount of modulation in slot 4."},
    {Value, 311, "MATRIX SEND5",  960, 540, matrix1, Mtx, "", "Amount of modulation in slot 5."},
    {Value, 312, "MATRIX SEND6",  960, 452, matrix2, Mtx, "", "Amount of modulation in slot 6."},
    {Value, 313, "MATRIX SEND7",  960, 474, matrix2, Mtx, "", "Amount of modulation in slot 7."},
    {Value, 314, "MATRIX SEND8",  960, 496, matrix2, Mtx, "", "Amount of modulation in slot 8."},
    {Value, 315, "MATRIX SEND9",  960, 518, matrix2, Mtx, "", "Amount of modulation in slot 9."},
    {Value, 316, "MATRIX SEND10", 960, 540, matrix2, Mtx, "", "Amount of modulation in slot 10."},
    {Value, 317, "MATRIX SEND11", 960, 452, matrix3, Mtx, "", "Amount of modulation in slot 11."},
    {Value, 318, "MATRIX SEND12", 960, 474, matrix3, Mtx, "", "Amount of modulation in slot 12."},
    {Value, 319, "MATRIX SEND13", 960, 496, matrix3, Mtx, "", "Amount of modulation in slot 13."},
    {Value, 320, "MATRIX SEND14", 960, 518, matrix3, Mtx, "", "Amount of modulation in slot 14."},
    {Value, 321, "MATRIX SEND15", 960, 540, matrix3, Mtx, "", "Amount of modulation in slot 15."},
    // Value fields of envelopes, oscillators and LFOs
    {Value, 179, "VOL ENV HOLD",   158, 526, envelope1, Env, "", "Adjusts the hold time of the volume envelope."},
    {Value, 180, "FILT ENV HOLD",  158, 526, envelope2, Env, "", "Adjusts the hold time of the filter envelope."},
    {Value, 181, "AUX1 ENV HOLD",  158, 526, envelope3, Env, "", "Adjusts the hold time of the aux 1 envelope."},
    {Value, 182, "AUX2 ENV HOLD",  158, 526, envelope4, Env, "", "Adjusts the hold time of the aux 2 envelope."},
    {Value, 195, "VOL ENV SHAPE",  270, 526, envelope1, Env, "", "Adjusts the curvature of the volume envelope."},
    {Value, 196, "FILT ENV SHAPE", 270, 526, envelope2, Env, "", "Adjusts the curvature of the filter envelope."},
    {Value, 197, "AUX1 ENV SHAPE", 270, 526, envelope3, Env, "", "Adjusts the curvature of the aux 1 envelope."},
    {Value, 198, "AUX2 ENV SHAPE", 270, 526, envelope4, Env, "", "Adjusts the curvature of the aux 2 envelope."},
    {Value,  51, "OSC1 KEY FOL",   306, 202, layer,     Osc, "", "Adjusts how the pitch of oscillator 1 follows the keys."},
    {Value,  52, "OSC2 KEY FOL",   306, 296, layer,     Osc, "", "Adjusts how the pitch of oscillator 2 follows the keys."},
    {Value,  53, "OSC3 KEY FOL",   306, 390, layer,     Osc, "", "Adjusts how the pitch of oscillator 3 follows the keys."},
    {Value, 143, "LFO1 START",     554, 526, lfo1,      Lfo, "", lfoStartTip},
    {Value, 144, "LFO2 START",     554, 526, lfo2,      Lfo, "", lfoStartTip},
    {Value, 145, "LFO3 START",     554, 526, lfo3,      Lfo, "", lfoStartTip},
    {Value, 149, "LFO1 FADE",      666, 526, lfo1,      Lfo, "", "Adjusts the time LFO 1 fades in."},
    {Value, 150, "LFO2 FADE",      666, 526, lfo2,      Lfo, "", "Adjusts the time LFO 2 fades in."},
    {Value, 151, "LFO3 FADE",      666, 526, lfo3,      Lfo, "", "Adjusts the time LFO 3 fades in."},
    // Steps of the step LFO
    {Step, 159, "STEP 1",  558, 454, stepLfo, Lfo, "", "Controls the level of step 1 of the step LFO"},
    {Step, 160, "STEP 2",  572, 454, stepLfo, Lfo, "", "Controls the level of step 2 of the step LFO"},
    {Step, 161, "STEP 3",  586, 454, stepLfo, Lfo, "", "Controls the level of step 3 of the step LFO"},
    {Step, 162, "STEP 4",  600, 454, stepLfo, Lfo, "", "Controls the level of step 4 of the step LFO"},
    {Step, 163, "STEP 5",  614, 454, stepLfo, Lfo, "", "Controls the level of step 5 of the step LFO"},
    {Step, 164, "STEP 6",  628, 454, stepLfo, Lfo, "", "Controls the level of step 6 of the step LFO"},
    {Step, 165, "STEP 7",  642, 454, stepLfo, Lfo, "", "Controls the level of step 7 of the step LFO"},
    {Step, 166, "STEP 8",  656, 454, stepLfo, Lfo, "", "Controls the level of step 8 of the step LFO"},
    {Step, 167, "STEP 9",  670, 454, stepLfo, Lfo, "", "Controls the level of step 9 of the step LFO"},
    {Step, 168, "STEP 10", 684, 454, stepLfo, Lfo, "", "Controls the level of step 10 of the step LFO"},
    {Step, 169, "STEP 11", 698, 454, stepLfo, Lfo, "", "Controls the level of step 11 of the step LFO"},
    {Step, 170, "STEP 12", 712, 454, stepLfo, Lfo, "", "Controls the level of step 12 of the step LFO"},
    {Step, 171, "STEP 13", 726, 454, stepLfo, Lfo, "", "Controls the level of step 13 of the step LFO"},
    {Step, 172, "STEP 14", 740, 454, stepLfo, Lfo, "", "Controls the level of step 14 of the step LFO"},
    {Step, 173, "STEP 15", 754, 454, stepLfo, Lfo, "", "Controls the level of step 15 of the step LFO"},
    {Step, 174, "STEP 16", 768, 454, stepLfo, Lfo, "", "Controls the level of step 16 of the step LFO"},
    // Speeds as text
    {Value, 1268, "LFO DISPLAY", 602, 470, lfo1,    Lfo, "", "Adjusts the speed LFO 1 runs at."},
    {Value, 1269, "LFO DISPLAY", 602, 470, lfo2,    Lfo, "", "Adjusts the speed LFO 2 runs at."},
    {Value, 1270, "LFO DISPLAY", 602, 470, lfo3,    Lfo, "", "Adjusts the speed LFO 3 runs at."},
    {Value, 1271, "LFO DISPLAY", 600, 522, stepLfo, Lfo, "", "Adjusts the speed the step LFO runs at."},
    // Effect parameters
    {EffectValue, 123, "INS FX1 PAR1",   1006, 330, insert1, Out, "", "Adjusts parameter 1 of insert effect 1."},
    {EffectValue, 124, "INS FX1 PAR2",   1006, 350, insert1, Out, "", "Adjusts parameter 2 of insert effect 1."},
    {EffectValue, 125, "INS FX1 PAR3",   1006, 370, insert1, Out, "", "Adjusts parameter 3 of insert effect 1."},
    {EffectValue, 126, "INS FX1 PAR4",   1006, 390, insert1, Out, "", "Adjusts parameter 4 of insert effect 1."},
    {EffectValue, 271, "INS FX2 PAR1",   1006, 330, insert2, Out, "", "Adjusts parameter 1 of insert effect 2."},
    {EffectValue, 272, "INS FX2 PAR2",   1006, 350, insert2, Out, "", "Adjusts parameter 2 of insert effect 2."},
    {EffectValue, 273, "INS FX2 PAR3",   1006, 370, insert2, Out, "", "Adjusts parameter 3 of insert effect 2."},
    {EffectValue, 274, "INS FX2 PAR4",   1006, 390, insert2, Out, "", "Adjusts parameter 4 of insert effect 2."},
    {EffectValue,   7, "MASTER FX PAR1",  874,  34, always,  Out, "", "Adjusts parameter 1 of the master effect."},
    {EffectValue,   8, "MASTER FX PAR2",  874,  56, always,  Out, "", "Adjusts parameter 2 of the master effect."},
    {EffectValue,   9, "MASTER FX PAR3",  874,  78, always,  Out, "", "Adjusts parameter 3 of the master effect."},
    {EffectValue,  10, "MASTER FX PAR4",  874, 100, always,  Out, "", "Adjusts parameter 4 of the master effect."},
    // Displays and the buttons of samples
    {FilterView,   1255, "FILTER SPECTRUM 1", 612, 166, layer,   Fil, "", "Frequency response of filter 1"},
    {FilterView,   1256, "FILTER SPECTRUM 2", 612, 308, layer,   Fil, "", "Frequency response of filter 2"},
    {EnvelopeView, 1257, "ENVELOPE",           18, 452, layer,   Env, "", "Display of the envelope"},
    {LfoView,      1258, "LFO WAVEFORM",      414, 452, layer,   Lfo, "", "Display of the LFO"},
    {SampleButton, 1259, "OSC1 LOAD",          76, 202, sample1, Osc, "", "Loads a sample into oscillator 1"},
    {SampleButton, 1261, "OSC2 LOAD",          76, 296, sample2, Osc, "", "Loads a sample into oscillator 2"},
    {SampleButton, 1263, "OSC3 LOAD",          76, 390, sample3, Osc, "", "Loads a sample into oscillator 3"},
    {SampleButton, 1260, "OSC1 EDIT",          94, 202, sample1, Osc, "", "Edits the sample of oscillator 1"},
    {SampleButton, 1262, "OSC2 EDIT",          94, 296, sample2, Osc, "", "Edits the sample of oscillator 2"},
    {SampleButton, 1264, "OSC3 EDIT",          94, 390, sample3, Osc, "", "Edits the sample of oscillator 3"},
    // Knobs of the equalizer and the master effect
    {Knob, 2, "EQ LOW",        1052, 88, always, Out, "Low",  "Controls the bass of the equalizer"},
    {Knob, 3, "EQ MID",        1104, 88, always, Out, "Mid",  "Controls the mids of the equalizer"},
    {Knob, 4, "EQ HIGH",       1156, 88, always, Out, "High", "Controls the treble of the equalizer"},
    {Knob, 6, "MASTER FX MIX",  838, 70, always, Out, "Mix",  "Controls the mix of the master effect"},
    // Filter 2 and oscillator 3
    {Knob,      108, "FIL2 KEY",       918, 314, layer, Fil, "Key",        "Controls the key follow of filter 2"},
    {Knob,      110, "FIL2 ENV",       872, 314, layer, Fil, "Env",        "Amount of envelope modulation of filter 2"},
    {Knob,      104, "FIL2 PAN",       872, 372, layer, Fil, "Pan",        "Controls the panning of filter 2"},
    {Knob,       26, "OSC3 OCTAVE",    236, 350, layer, Osc, "Octave",     "Controls the octave of oscillator 3"},
    {Knob,       29, "OSC3 INTERVAL",  290, 350, layer, Osc, "Interval",   "Controls the interval of oscillator 3"},
    {Knob,       32, "OSC3 DETUNE",    344, 350, layer, Osc, "Detune",     "Controls the detuning of oscillator 3"},
    {Knob,       35, "OSC3 TONE",      398, 350, layer, Osc, "Tone",       "Controls the tone color of oscillator 3"},
    {Knob,       38, "OSC3 PW",        452, 350, layer, Osc, "PW",         "Controls the pulse width of oscillator 3"},
    {Knob,       47, "OSC3 FILTER 12", 506, 350, layer, Osc, "Filter 1·2", "Balances oscillator 3 between the filters"},
    {Knob,       41, "OSC3 VOLUME",    560, 350, layer, Osc, "Volume",     "Controls the volume of oscillator 3"},
    {LargeKnob,  98, "FIL2 CUTOFF",    777, 328, layer, Fil, "Cutoff",     "Controls the cutoff frequency of filter 2"},
    {Knob,       96, "OSC23 FM",        31, 302, layer, Osc, "FM",         "Controls the FM of oscillator 2 to oscillator 3"},
    {Knob,      100, "FIL2 RESO",      826, 314, layer, Fil, "Reso",       "Controls the resonance of filter 2"},
    {Knob,      106, "FIL2 DRIVE",     826, 372, layer, Fil, "Drive",      "Controls the drive of filter 2"},
    {Knob,      102, "FIL2 VOLUME",    918, 372, layer, Fil, "Volume",     "Controls the volume of filter 2"},
    {Knob,      115, "FIL ANALOG",     968, 172, layer, Fil, "Analog",     "Controls the analog color of the filters"},
    {Knob,      116, "FIL RINGMOD",    968, 372, layer, Fil, "Ring",       "Controls the ring modulation of the filters"},
    // Oscillator 2
    {Knob, 25, "OSC2 OCTAVE",    236, 256, layer, Osc, "Octave",     "Controls the octave of oscillator 2"},
    {Knob, 28, "OSC2 INTERVAL",  290, 256, layer, Osc, "Interval",   "Controls the interval of oscillator 2"},
    {Knob, 31, "OSC2 DETUNE",    344, 256, layer, Osc, "Detune",     "Controls the detuning of oscillator 2"},
    {Knob, 34, "OSC2 TONE",      398, 256, layer, Osc, "Tone",       "Controls the tone color of oscillator 2"},
    {Knob, 37, "OSC2 PW",        452, 256, layer, Osc, "PW",         "Controls the pulse width of oscillator 2"},
    {Knob, 46, "OSC2 FILTER 12", 506, 256, layer, Osc, "Filter 1·2", "Balances oscillator 2 between the filters"},
    {Knob, 40, "OSC2 VOLUME",    560, 256, layer, Osc, "Volume",     "Controls the volume of oscillator 2"},
    // Filter 1 and oscillator 1
    {Knob,      107, "FIL1 KEY",       918, 172, layer, Fil, "Key",        "Controls the key follow of filter 1"},
    {Knob,      109, "FIL1 ENV",       872, 172, layer, Fil, "Env",        "Amount of envelope modulation of filter 1"},
    {Knob,      103, "FIL1 PAN",       872, 230, layer, Fil, "Pan",        "Controls the panning of filter 1"},
    {LargeKnob,  97, "FIL1 CUTOFF",    777, 186, layer, Fil, "Cutoff",     "Controls the cutoff frequency of filter 1"},
    {Knob,       95, "OSC12 FM",        31, 208, layer, Osc, "FM",         "Controls the FM of oscillator 1 to oscillator 2"},
    {Knob,       24, "OSC1 OCTAVE",    236, 162, layer, Osc, "Octave",     "Controls the octave of oscillator 1"},
    {Knob,       27, "OSC1 INTERVAL",  290, 162, layer, Osc, "Interval",   "Controls the interval of oscillator 1"},
    {Knob,       30, "OSC1 DETUNE",    344, 162, layer, Osc, "Detune",     "Controls the detuning of oscillator 1"},
    {Knob,       33, "OSC1 TONE",      398, 162, layer, Osc, "Tone",       "Controls the tone color of oscillator 1"},
    {Knob,       36, "OSC1 PW",        452, 162, layer, Osc, "PW",         "Controls the pulse width of oscillator 1"},
    {Knob,       45, "OSC1 FILTER 12", 506, 162, layer, Osc, "Filter 1·2", "Balances oscillator 1 between the filters"},
    {Knob,       39, "OSC1 VOLUME",    560, 162, layer, Osc, "Volume",     "Controls the volume of oscillator 1"},
    {Knob,       99, "FIL1 RESO",      826, 172, layer, Fil, "Reso",       "Controls the resonance of filter 1"},
    {Knob,      101, "FIL1 VOLUME",    918, 230, layer, Fil, "Volume",     "Controls the volume of filter 1"},
    {Knob,      105, "FIL1 DRIVE",     826, 230, layer, Fil, "Drive",      "Controls the drive of filter 1"},
    // Volume, inserts, LFO speeds
    {LargeKnob, 120, "VOLUME",         1028, 198, layer,   Out, "Volume", "Controls the volume of the layer"},
    {Knob,      122, "INS FX1 MIX",    1163, 350, insert1, Out, "Mix",    "Controls the mix of insert effect 1"},
    {Knob,      270, "INS FX2 MIX",    1163, 350, insert2, Out, "Mix",    "Controls the mix of insert effect 2"},
    {Knob,      137, "LFO1 SPEED",      572, 478, lfo1,    Lfo, "Speed",  "Controls the speed LFO 1 runs at"},
    {Knob,      138, "LFO2 SPEED",      572, 478, lfo2,    Lfo, "Speed",  "Controls the speed LFO 2 runs at"},
    {Knob,      139, "LFO3 SPEED",      572, 478, lfo3,    Lfo, "Speed",  "Controls the speed LFO 3 runs at"},
    {Knob,      152, "STEP LFO SPEED",  574, 530, stepLfo, Lfo, "Speed",  "Controls the speed the step LFO runs at"},
    // Envelopes
    {Knob, 175, "VOL ENV ATTACK",   176, 478, envelope1, Env, "Attack",  "Attack control for the volume envelope"},
    {Knob, 176, "FILT ENV ATTACK",  176, 478, envelope2, Env, "Attack",  "Attack control for the filter envelope"},
    {Knob, 177, "AUX1 ENV ATTACK",  176, 478, envelope3, Env, "Attack",  "Attack control for the aux 1 envelope"},
    {Knob, 178, "AUX2 ENV ATTACK",  176, 478, envelope4, Env, "Attack",  "Attack control for the aux 2 envelope"},
    {Knob, 183, "VOL ENV DECAY",    232, 478, envelope1, Env, "Decay",   "Decay control for the volume envelope"},
    {Knob, 184, "FILT ENV DECAY",   232, 478, envelope2, Env, "Decay",   "Decay control for the filter envelope"},
    {Knob, 185, "AUX1 ENV DECAY",   232, 478, envelope3, Env, "Decay",   "Decay control for the aux 1 envelope"},
    {Knob, 186, "AUX2 ENV DECAY",   232, 478, envelope4, Env, "Decay",   "Decay control for the aux 2 envelope"},
    {Knob, 187, "VOL ENV SUSTAIN",  288, 478, envelope1, Env, "Sustain", "Sustain control for the volume envelope"},
    {Knob, 188, "FILT ENV SUSTAIN", 288, 478, envelope2, Env, "Sustain", "Sustain control for the filter envelope"},
    {Knob, 189, "AUX1 ENV SUSTAIN", 288, 478, envelope3, Env, "Sustain", "Sustain control for the aux 1 envelope"},
    {Knob, 190, "AUX2 ENV SUSTAIN", 288, 478, envelope4, Env, "Sustain", "Sustain control for the aux 2 envelope"},
    {Knob, 191, "VOL ENV RELEASE",  344, 478, envelope1, Env, "Release", "Release control for the volume envelope"},
    {Knob, 192, "FILT ENV RELEASE", 344, 478, envelope2, Env, "Release", "Release control for the filter envelope"},
    {Knob, 193, "AUX1 ENV RELEASE", 344, 478, envelope3, Env, "Release", "Release control for the aux 1 envelope"},
    {Knob, 194, "AUX2 ENV RELEASE", 344, 478, envelope4, Env, "Release", "Release control for the aux 2 envelope"},
    // Wheel and master
    {Knob,      1, "MODWHEEL",      682, 44, always, Out, "Mod",    "Controls the modulation wheel"},
    {LargeKnob, 0, "MASTER VOLUME", 736, 44, always, Out, "Master", "Controls the master volume"},
};
// clang-format on

static_assert(std::size(rows) == controlTotal);

struct Size {
    int width, height;
};

Size sizeOf(const Row& row) {
    switch (row.kind) {
        case Knob: return {24, 24};
        case LargeKnob: return {42, 42};
        case Switch: return {32, 14};
        case Selector: return row.tag >= tag::layer1 && row.tag < tag::layer1 + 4 ? Size{44, 46} : Size{46, 20};
        case Button:
            if (row.tag == tag::shop) return {104, 20};
            return {row.tag == tag::browser ? 36 : 24, 36};
        case LargeList: return {130, 18};
        case List: return {row.tag == parameter::StepMode ? 130 : 112, 18};  // beneath a large one
        case SmallList: return {46, 16};
        case Menu: return {46, 20};
        case Value: return {90, 16};
        case Step: return {12, 58};
        case EffectValue: return {130, 18};
        case WaveView: return {130, 40};
        case FilterView: return {130, 92};
        case SampleButton: return {16, 16};
        case EnvelopeView: return {130, 102};
        case LfoView: return {130, 60};
    }
    return {};
}

std::string tooltipOf(const Row& row) {
    std::string text = row.tooltip;
    if (const auto at = text.find('#'); at != std::string::npos) {
        const char* digit = std::find_if(row.name, row.name + std::strlen(row.name), [](char c) { return c >= '0' && c <= '9'; });
        text[at] = *digit;
    }
    if (row.kind == Value || row.kind == EffectValue) text.append("\n").append(dragLine);
    return text;
}

bool isBipolarControl(const ParameterInfo& info) { return isBipolar(info) || info.knobText == KnobText::Octave; }

ControlEntry entryOf(const Row& row) {
    const Size size = sizeOf(row);
    ControlEntry entry{row.kind, row.tag, row.name, row.x,          row.y,       size.width,  size.height, 0.0f,
                       row.page, {},      nullptr,  tooltipOf(row), row.caption, row.section, false};
    if (const int n = parameterOfTag(row.tag); n >= 0) {
        const ParameterInfo& info = parameterInfo(n);
        entry.defaultValue = info.defaultValue;
        entry.labels = info.labels;
        entry.format = info.formatter;
        entry.bipolar = isBipolarControl(info);
    }
    if (row.tag >= parameterCount) {
        entry.labels = menuRows(row.tag);
        if (row.kind == Value) entry.format = formatPercent;
    }
    return entry;
}

using Table = std::array<ControlEntry, controlTotal>;

const Table& table() {
    static const Table entries = [] {
        Table made;
        std::transform(std::begin(rows), std::end(rows), made.begin(), entryOf);
        return made;
    }();
    return entries;
}

template <class Matches>
int firstRow(Matches matches) {
    const auto* found = std::find_if(std::begin(rows), std::end(rows), matches);
    return found == std::end(rows) ? -1 : static_cast<int>(found - rows);
}

}  // namespace

int controlCount() { return controlTotal; }

const ControlEntry& controlEntry(int index) {
    return table()[static_cast<std::size_t>(index >= 0 && index < controlTotal ? index : 0)];
}

int controlIndexForTag(int tag) {
    return firstRow([tag](const Row& row) { return row.tag == tag; });
}

int controlIndexForName(const char* name) {
    return firstRow([name](const Row& row) { return std::strcmp(row.name, name) == 0; });
}

bool isKnob(const ControlEntry& entry) { return entry.kind == Knob || entry.kind == LargeKnob; }
bool isList(const ControlEntry& entry) { return entry.kind == LargeList || entry.kind == List || entry.kind == SmallList; }
bool isWaveMenu(const ControlEntry& entry) { return isOneOf(entry.tag, tag::waveMenu1, oscillatorCount); }

int parameterOfTag(int tag) {
    if (tag >= 0 && tag < layerParameterEnd) return tag;
    if (tag == tag::modWheel) return parameter::Modwheel;
    if (tag == tag::lfoSpeedText1 + 3) return parameter::StepSped;
    if (tag >= tag::lfoSpeedText1 && tag < tag::lfoSpeedText1 + 3) return parameter::LfoSpd1 + tag - tag::lfoSpeedText1;
    return -1;
}

int hostIndexOfTag(int tag, int layer) {
    const int n = parameterOfTag(tag);
    return n < globalParameterCount ? n : n + layerParameterStride * clampTo(layer, 0, 3);
}

}  // namespace vantoric

#include "editor/model/window_layout.h"

#include "base/parameters.h"

namespace vantoric {

namespace {

using enum Section;

// Three columns of 388 at x = 10, 406 and 802, gutters of 8; the row of the sound is split 586, 388 and 190. Rows: band 0 to
// 128, sound 136 to 412, modulation 420 to 562, arpeggiator 570 to 652. Everything even, so that x 1.5 keeps whole pixels.
// clang-format off
constexpr Panel panels[] = {
    {"",            {10, 34, 388, 44},    Output,      true},   // name of the patch
    {"",            {602, 8, 192, 114},   Output,      true},   // wheels, master and meter
    {"Master FX",   {802, 8, 208, 114},   Output,      true},
    {"Equalizer",   {1018, 8, 172, 114},  Output,      true},
    {"Osc",         {10, 136, 56, 276},   Oscillators, false},  // what links the oscillators
    {"",            {68, 136, 528, 88},   Oscillators, false},
    {"",            {68, 230, 528, 88},   Oscillators, false},
    {"",            {68, 324, 528, 88},   Oscillators, false},
    {"",            {604, 136, 338, 134}, Filters,     false},
    {"",            {604, 278, 338, 134}, Filters,     false},
    {"Filters",     {944, 136, 48, 276},  Filters,     false},  // what links the filters
    {"Voice",       {1000, 136, 190, 134}, Output,     false},
    {"Insert",      {1000, 278, 190, 134}, Output,     false},
    {"Envelopes",   {10, 420, 388, 142},  Envelopes,   false},
    {"LFO",         {406, 420, 388, 142}, Lfo,         false},
    {"Matrix",      {802, 420, 388, 142}, Matrix,      false},
    {"Arpeggiator", {10, 570, 1180, 82},  Arpeggiator, false},
};

// In the order of their enumeration.
constexpr WindowPartEntry parts[] = {
    {WindowPart::Favourite,    tag::favourite,    "FAVOURITE",          {314, 44, 24, 24}},
    {WindowPart::CategoryList, tag::categoryList, "CATEGORY",           {56, 37, 252, 15}},
    {WindowPart::PatchList,    tag::patchList,    "PATCH",              {56, 52, 252, 24}},
    {WindowPart::PitchWheel,   tag::pitchWheel,   "PITCHWHEEL",         {610, 14, 14, 80}},
    {WindowPart::ModWheel,     tag::modWheel,     "MODWHEEL",           {638, 14, 14, 80}},
    {WindowPart::Meter,        0,                 "LEVEL",              {772, 14, 14, 80}},
    {WindowPart::HintLine,     0,                 "HINT LINE",          {10, 106, 584, 16}},
    {WindowPart::DragEnvelope, 0,                 "DRAG ENVELOPE",      {302, 426, 88, 20}},
    {WindowPart::DragLfo,      0,                 "DRAG LFO",           {698, 426, 88, 20}},
    {WindowPart::DragWheel,    0,                 "DRAG MODWHEEL",      {660, 76, 44, 16}},
    {WindowPart::Multilayer,   0,                 "MULTILAYER EDITING", {10, 84, 48, 18}},
};
// clang-format on

}  // namespace

std::span<const Panel> windowPanels() { return panels; }

std::span<const WindowPartEntry> windowParts() { return parts; }

const WindowPartEntry& windowPart(WindowPart part) { return parts[static_cast<std::size_t>(part)]; }

LayoutRect controlRect(const ControlEntry& entry) {
    if (isKnob(entry)) return {entry.x - entry.width / 2, entry.y - entry.height / 2, entry.width, entry.height};
    return {entry.x, entry.y, entry.width, entry.height};
}

bool captionStandsBeside(const ControlEntry& entry) { return entry.tag == parameter::Fm1 || entry.tag == parameter::Fm1 + 1; }

}  // namespace vantoric

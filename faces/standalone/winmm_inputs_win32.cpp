#include "faces/standalone/winmm_inputs.h"

#include <windows.h>
// After windows.h: it needs its types.
#include <mmsystem.h>

#include <set>

#include "faces/standalone/held_keys.h"
#include "platform/wide_text.h"

namespace vantoric::standalone {
namespace {

struct Named {
    UINT number;
    std::string id, name;
};

// What is plugged in. Numbers change when something is; of several of one name each but the first has one of its own.
std::vector<Named> all() {
    std::vector<Named> found;
    std::map<std::string, int> seen;
    const UINT count = midiInGetNumDevs();
    for (UINT number = 0; number < count; ++number) {
        MIDIINCAPSW about{};
        if (midiInGetDevCapsW(number, &about, sizeof about) != MMSYSERR_NOERROR) continue;
        about.szPname[std::size(about.szPname) - 1] = L'\0';
        std::string name = platform::utf8(about.szPname);
        if (const int same = ++seen[name]; same > 1) name.append(" ").append(std::to_string(same));
        found.push_back({number, name, name});
    }
    return found;
}

}  // namespace

// An input that is listened to. What is held on it when it goes is let go.
class WinmmInputs::Open {
public:
    Open(UINT number, WinmmInputs& inputs) : inputs_(inputs) {
        isOpen_ = midiInOpen(&handle_, number, reinterpret_cast<DWORD_PTR>(&heard), reinterpret_cast<DWORD_PTR>(this),
                             CALLBACK_FUNCTION) == MMSYSERR_NOERROR;
        if (isOpen_) midiInStart(handle_);
    }
    ~Open() {
        if (!isOpen_) return;
        midiInReset(handle_);
        midiInClose(handle_);  // nothing is heard any more
        held_.release([this](const ShortMessage& message) { inputs_.receive(message); });
    }
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;
    bool isOpen() const { return isOpen_; }

private:
    // Called by the system: three bytes of a message, the first one lowest.
    static void CALLBACK heard(HMIDIIN, UINT kind, DWORD_PTR object, DWORD_PTR bytes, DWORD_PTR) {
        if (kind != MIM_DATA) return;
        Open& open = *reinterpret_cast<Open*>(object);
        const ShortMessage message{static_cast<std::uint8_t>(bytes), static_cast<std::uint8_t>(bytes >> 8),
                                   static_cast<std::uint8_t>(bytes >> 16)};
        open.held_.follow(message);
        open.inputs_.receive(message);
    }

    WinmmInputs& inputs_;
    HMIDIIN handle_ = nullptr;
    HeldKeys held_;  // the system's thread's, until the input is closed
    bool isOpen_ = false;
};

WinmmInputs::WinmmInputs(Player& player) : player_(player) {}
WinmmInputs::~WinmmInputs() = default;

std::vector<MidiInput> WinmmInputs::inputs() {
    std::vector<MidiInput> there;
    std::set<std::string> ids;
    for (Named& input : all()) {
        ids.insert(input.id);
        there.push_back({input.id, std::move(input.name), open_.contains(input.id)});
    }
    // What was unplugged is let go, so that it is opened anew when it is back.
    std::erase_if(open_, [&ids](const auto& open) { return !ids.contains(open.first); });
    return there;
}

void WinmmInputs::connect(const std::string& id, bool wanted) {
    if (!wanted) return void(open_.erase(id));
    for (const Named& input : all()) {
        if (input.id != id) continue;
        auto open = std::make_unique<Open>(input.number, *this);
        if (open->isOpen()) open_[id] = std::move(open);
    }
}

void WinmmInputs::receive(const ShortMessage& message) {
    const std::lock_guard guard(taking_);
    player_.receiveAt(clockSeconds(), message);
}

}  // namespace vantoric::standalone

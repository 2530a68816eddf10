// One object is component and processor; its controller is a part of it, as the window works on the instrument itself.
// MIDI controllers reach a plug-in of this format as parameters only: there is a hidden one for each of the 16 channels' 128
// controllers, aftertouch and pitch wheel.
#include "faces/vst3/vst3_plugin.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "faces/common/block_events.h"
#include "faces/common/face_window.h"
#include "faces/common/host_calls.h"
#include "faces/common/host_news.h"
#include "faces/common/host_parameters.h"
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/keycodes.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivstevents.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstmidicontrollers.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"
#include "pluginterfaces/vst/ivstprocesscontext.h"
#include "pluginterfaces/vst/ivstunits.h"

namespace Steinberg {
DEF_CLASS_IID(IPlugView)
DEF_CLASS_IID(IPlugFrame)
#ifndef _WIN32
namespace Linux {
DEF_CLASS_IID(IRunLoop)
DEF_CLASS_IID(ITimerHandler)
}  // namespace Linux
#endif
namespace Vst {
DEF_CLASS_IID(IComponent)
DEF_CLASS_IID(IAudioProcessor)
DEF_CLASS_IID(IProcessContextRequirements)
DEF_CLASS_IID(IEditController)
DEF_CLASS_IID(IMidiMapping)
DEF_CLASS_IID(IUnitInfo)
DEF_CLASS_IID(IComponentHandler)
DEF_CLASS_IID(IComponentHandler2)
DEF_CLASS_IID(IHostApplication)
}  // namespace Vst
}  // namespace Steinberg

namespace vantoric::vst3_face {

using namespace Steinberg;
using namespace Steinberg::Vst;

const TUID classId = INLINE_UID(0x6E2B41C7, 0x93D84A15, 0xB07C5F2E, 0xA1D46983);

namespace {

namespace hp = host_parameter;

constexpr ParamID firstController = 0x10000;
constexpr int controllersOfChannel = kCountCtrlNumber, channels = 16, controllerCount = channels * controllersOfChannel;

#ifdef _WIN32
const FIDString windowType = kPlatformTypeHWND;
#else
const FIDString windowType = kPlatformTypeX11EmbedWindowID;
#endif

// What a call answers that has thrown.
template <class Work>
tresult guarded(Work&& work) noexcept {
    return vantoric::guarded(work, tresult{kInternalError});
}

// The instrument's texts are ASCII.
void writeText(char16* to, std::size_t size, const std::string& text) {
    const std::size_t length = std::min(text.size(), size - 1);
    for (std::size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        to[i] = static_cast<char16>(byte < 128 ? byte : '?');
    }
    to[length] = 0;
}

std::string readText(const char16* from, std::size_t most) {
    std::string text;
    for (std::size_t i = 0; i < most && from[i] != 0; ++i) text += static_cast<char>(from[i] < 128 ? from[i] : '?');
    return text;
}

bool isParameter(ParamID id) { return id < static_cast<ParamID>(parameterCount); }
bool isController(ParamID id) { return id >= firstController && id - firstController < static_cast<ParamID>(controllerCount); }
double normalized(int index, float stored) { return hp::plain(index, stored) / hp::largest(index); }
float storedOf(const Instrument& instrument, int index, double normalizedValue) {
    return hp::storedFor(instrument, index, normalizedValue * hp::largest(index));
}

// A value for each parameter, or none. Any thread.
class ValueNotes {
public:
    ValueNotes() { clear(); }
    void put(int index, double value) { at(index).store(value, std::memory_order_relaxed); }
    // NaN for none.
    double get(int index) const { return values_[static_cast<std::size_t>(index)].load(std::memory_order_relaxed); }
    double take(int index) { return at(index).exchange(NAN, std::memory_order_relaxed); }
    void clear() {
        for (auto& value : values_) value.store(NAN, std::memory_order_relaxed);
    }

private:
    std::atomic<double>& at(int index) { return values_[static_cast<std::size_t>(index)]; }
    std::array<std::atomic<double>, parameterCount> values_;
};

class Plugin;

// What hosts and users see: parameters, units, the window.
class Controller final : public IEditController, public IMidiMapping, public IUnitInfo {
public:
    explicit Controller(Plugin& plugin) : plugin_(plugin) {}
    ~Controller() { setComponentHandler(nullptr); }

    // The plug-in's, of which this is a part.
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override;
    uint32 PLUGIN_API addRef() override;
    uint32 PLUGIN_API release() override;

    tresult PLUGIN_API initialize(FUnknown* context) override;
    tresult PLUGIN_API terminate() override;
    tresult PLUGIN_API setComponentState(IBStream*) override { return kResultOk; }  // it is ours already
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }           // the component has it all
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }
    int32 PLUGIN_API getParameterCount() override { return parameterCount + controllerCount; }
    tresult PLUGIN_API getParameterInfo(int32 place, Steinberg::Vst::ParameterInfo& info) override;
    tresult PLUGIN_API getParamStringByValue(ParamID id, ParamValue value, String128 text) override;
    tresult PLUGIN_API getParamValueByString(ParamID id, TChar* text, ParamValue& value) override;
    ParamValue PLUGIN_API normalizedParamToPlain(ParamID id, ParamValue value) override;
    ParamValue PLUGIN_API plainParamToNormalized(ParamID id, ParamValue plain) override;
    ParamValue PLUGIN_API getParamNormalized(ParamID id) override;
    tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) override;
    tresult PLUGIN_API setComponentHandler(IComponentHandler* handler) override;
    IPlugView* PLUGIN_API createView(FIDString name) override;

    tresult PLUGIN_API getMidiControllerAssignment(int32 bus, int16 channel, CtrlNumber controller, ParamID& id) override;

    int32 PLUGIN_API getUnitCount() override { return 1 + layerCount; }
    tresult PLUGIN_API getUnitInfo(int32 place, UnitInfo& info) override;
    int32 PLUGIN_API getProgramListCount() override { return 0; }
    tresult PLUGIN_API getProgramListInfo(int32, ProgramListInfo&) override { return kResultFalse; }
    tresult PLUGIN_API getProgramName(ProgramListID, int32, String128) override { return kResultFalse; }
    tresult PLUGIN_API getProgramInfo(ProgramListID, int32, Steinberg::Vst::CString, String128) override { return kResultFalse; }
    tresult PLUGIN_API hasProgramPitchNames(ProgramListID, int32) override { return kResultFalse; }
    tresult PLUGIN_API getProgramPitchName(ProgramListID, int32, int16, String128) override { return kResultFalse; }
    UnitID PLUGIN_API getSelectedUnit() override { return kRootUnitId; }
    tresult PLUGIN_API selectUnit(UnitID) override { return kResultFalse; }
    tresult PLUGIN_API getUnitByBus(MediaType, BusDirection, int32, int32, UnitID& unit) override {
        unit = kRootUnitId;
        return kResultOk;
    }
    tresult PLUGIN_API setUnitProgramData(int32, int32, IBStream*) override { return kResultFalse; }

    IComponentHandler* handler() const { return handler_; }

private:
    Plugin& plugin_;
    IComponentHandler* handler_ = nullptr;
};

// A place for the window inside the host's. There may be several, of which the one attached last has the window.
class View final : public IPlugView
#ifndef _WIN32
    ,
                   public Linux::ITimerHandler
#endif
{
public:
    explicit View(Plugin& plugin);
    virtual ~View();

    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (object == nullptr) return kInvalidArgument;
        QUERY_INTERFACE(wanted, object, FUnknown::iid, IPlugView)
        QUERY_INTERFACE(wanted, object, IPlugView::iid, IPlugView)
#ifndef _WIN32
        QUERY_INTERFACE(wanted, object, Linux::ITimerHandler::iid, Linux::ITimerHandler)
#endif
        *object = nullptr;
        return kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return ++references_; }
    uint32 PLUGIN_API release() override {
        const uint32 left = --references_;
        if (left == 0) delete this;
        return left;
    }
    tresult PLUGIN_API isPlatformTypeSupported(FIDString type) override {
        return type != nullptr && std::strcmp(type, windowType) == 0 ? kResultTrue : kResultFalse;
    }
    tresult PLUGIN_API attached(void* parent, FIDString type) override;
    tresult PLUGIN_API removed() override;
    tresult PLUGIN_API onWheel(float) override { return kResultFalse; }
    tresult PLUGIN_API onKeyDown(char16 character, int16 number, int16 modifiers) override;
    tresult PLUGIN_API onKeyUp(char16, int16, int16) override { return kResultFalse; }
    tresult PLUGIN_API getSize(ViewRect* size) override;
    tresult PLUGIN_API onSize(ViewRect*) override { return kResultTrue; }
    tresult PLUGIN_API onFocus(TBool) override { return kResultTrue; }
    tresult PLUGIN_API setFrame(IPlugFrame* frame) override {
        frame_ = frame;
        return kResultTrue;
    }
    // The window has the sizes of its menu.
    tresult PLUGIN_API canResize() override { return kResultFalse; }
    tresult PLUGIN_API checkSizeConstraint(ViewRect* size) override { return getSize(size); }
#ifndef _WIN32
    void PLUGIN_API onTimer() override;
#endif
    // Another view has taken the window.
    void lose() { stopTimer(); }
    bool resize(int width, int height) {
        ViewRect size(0, 0, width, height);
        return frame_ != nullptr && frame_->resizeView(this, &size) == kResultTrue;
    }

private:
    bool startTimer();
    void stopTimer();

    Plugin& plugin_;
    IPlugFrame* frame_ = nullptr;
#ifndef _WIN32
    Linux::IRunLoop* loop_ = nullptr;
#endif
    std::atomic<uint32> references_{1};
};

#ifdef _WIN32
class Rounds {};
#else
// The host's own clock, where it offers one for all of a plug-in's life.
class Rounds final : public Linux::ITimerHandler {
public:
    // Null if the host has none.
    static std::unique_ptr<Rounds> start(Plugin& plugin, FUnknown* context);
    virtual ~Rounds();
    Rounds(const Rounds&) = delete;
    Rounds& operator=(const Rounds&) = delete;

    void PLUGIN_API onTimer() override;
    // The plug-in's, which outlives it.
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (object == nullptr) return kInvalidArgument;
        const bool isOurs =
            FUnknownPrivate::iidEqual(wanted, FUnknown::iid) || FUnknownPrivate::iidEqual(wanted, Linux::ITimerHandler::iid);
        *object = isOurs ? this : nullptr;
        return isOurs ? kResultOk : kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }

private:
    explicit Rounds(Plugin& plugin) : plugin_(plugin) {}
    static constexpr int period = 200;  // milliseconds

    Plugin& plugin_;
    Linux::IRunLoop* loop_ = nullptr;
};
#endif

class Plugin final : public IComponent, public IAudioProcessor, public IProcessContextRequirements, private HostPort {
public:
    Plugin() : plugged_(*this), told_(instrument_.parameters()) { window_ = makeFaceWindow(plugged_, ""); }

    Instrument& instrument() { return instrument_; }
    FaceWindow* window() { return window_.get(); }
    FUnknown* context() const { return context_; }
    // The host's value of a parameter, normalized: what it has set, even before the block that brings it.
    double value(int index) const;
    void setValue(int index, double normalizedValue);
    // Which view has the window; null for none. The one that had it loses it.
    void setView(View* view) {
        if (view_ != nullptr && view_ != view) view_->lose();
        view_ = view;
    }
    View* view() const { return view_; }
    // The window's thread: what came from elsewhere is told.
    [[maybe_unused]] void tellHost();

    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (object == nullptr) return kInvalidArgument;
        QUERY_INTERFACE(wanted, object, FUnknown::iid, IComponent)
        QUERY_INTERFACE(wanted, object, IPluginBase::iid, IComponent)
        QUERY_INTERFACE(wanted, object, IComponent::iid, IComponent)
        QUERY_INTERFACE(wanted, object, IAudioProcessor::iid, IAudioProcessor)
        QUERY_INTERFACE(wanted, object, IProcessContextRequirements::iid, IProcessContextRequirements)
        return queryController(wanted, object);
    }
    uint32 PLUGIN_API addRef() override { return ++references_; }
    uint32 PLUGIN_API release() override {
        const uint32 left = --references_;
        if (left == 0) delete this;
        return left;
    }

    // ---- component; controller and component are initialized each, in any order
    tresult PLUGIN_API initialize(FUnknown* context) override;
    tresult PLUGIN_API terminate() override;
    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }  // it is asked of the component
    tresult PLUGIN_API setIoMode(IoMode) override { return kNotImplemented; }
    int32 PLUGIN_API getBusCount(MediaType type, BusDirection direction) override {
        return (type == kAudio && direction == kOutput) || (type == kEvent && direction == kInput) ? 1 : 0;
    }
    tresult PLUGIN_API getBusInfo(MediaType type, BusDirection direction, int32 index, BusInfo& bus) override;
    tresult PLUGIN_API getRoutingInfo(RoutingInfo&, RoutingInfo&) override { return kNotImplemented; }
    tresult PLUGIN_API activateBus(MediaType type, BusDirection direction, int32 index, TBool) override {
        return index == 0 && getBusCount(type, direction) == 1 ? kResultOk : kInvalidArgument;
    }
    tresult PLUGIN_API setActive(TBool isOn) override;
    tresult PLUGIN_API setState(IBStream* stream) override {
        return guarded([&] { return load(stream); });
    }
    tresult PLUGIN_API getState(IBStream* stream) override {
        return guarded([&] { return save(stream); });
    }

    // ---- processor
    tresult PLUGIN_API setBusArrangements(SpeakerArrangement*, int32 inputs, SpeakerArrangement* outputs, int32 count) override {
        return inputs == 0 && count == 1 && outputs != nullptr && outputs[0] == SpeakerArr::kStereo ? kResultTrue : kResultFalse;
    }
    tresult PLUGIN_API getBusArrangement(BusDirection direction, int32 index, SpeakerArrangement& arrangement) override {
        if (direction != kOutput || index != 0) return kInvalidArgument;
        arrangement = SpeakerArr::kStereo;
        return kResultOk;
    }
    tresult PLUGIN_API canProcessSampleSize(int32 size) override {
        return size == kSample32 || size == kSample64 ? kResultTrue : kResultFalse;
    }
    uint32 PLUGIN_API getLatencySamples() override { return 0; }
    tresult PLUGIN_API setupProcessing(ProcessSetup& setup) override;
    tresult PLUGIN_API setProcessing(TBool isOn) override;
    tresult PLUGIN_API process(ProcessData& data) override;
    uint32 PLUGIN_API getTailSamples() override { return kInfiniteTail; }  // arpeggiators and feedback go on without a note
    uint32 PLUGIN_API getProcessContextRequirements() override { return kNeedTempo | kNeedProjectTimeMusic; }

    // By `release` alone.
    virtual ~Plugin() {
        stopRounds();
        window_.reset();
        if (context_ != nullptr) context_->release();
    }

private:
    tresult queryController(const TUID wanted, void** object);
    tresult load(IBStream* stream);
    tresult save(IBStream* stream);
    void keepContext(FUnknown* context);
    void startRounds();
    void stopRounds();

    // ---- the window's and the library's threads
    void editBegun(int index) override;
    void parameterEdited(int index, float value) override;
    void editEnded(int index) override;
    void patchChanged() override { isPatchNew_.store(true, std::memory_order_release); }
    void latencyChanged(int) override {}  // none, ever
    bool sizeWanted(int width, int height) override { return view_ != nullptr && view_->resize(width, height); }

    // ---- the audio thread
    tresult play(ProcessData& data);
    void collect(IParameterChanges* changes);
    void collect(IEventList* events);
    void collectController(ParamID id, std::int32_t frame, double value);
    void accept(IParameterChanges* changes);
    void tellValues(IParameterChanges* changes);
    bool patchIsKnown() const {
        return isRestoring_.load(std::memory_order_acquire) ||
               patchesKnown_.load(std::memory_order_acquire) == instrument_.patchesLoaded();
    }
    static Transport transportOf(const ProcessContext* context, bool isOffline);

    std::atomic<uint32> references_{1};
    FUnknown* context_ = nullptr;
    Controller controller_{*this};
    View* view_ = nullptr;
    Gestures gestures_;     // for who holds what
    ValueNotes asked_;      // what the host has set while it plays, until a block brings it
    ValueNotes performed_;  // what a hand in the window has set, stored, and the host was told there
    std::unique_ptr<Rounds> rounds_;
    std::atomic<bool> isPatchNew_{false}, isProcessing_{false}, isOffline_{false}, isRestoring_{false};
    std::atomic<std::uint32_t> patchesKnown_{0};  // of which the host has read the values
    PluggedInstrument plugged_;
    Instrument& instrument_{plugged_.instrument()};
    ToldValues told_;  // the audio thread
    BlockEvents events_;
    std::unique_ptr<FaceWindow> window_;
};

// ---- component ---------------------------------------------------------------------------------------------------

tresult Plugin::queryController(const TUID wanted, void** object) {
    const auto give = [object](auto* part) {
        part->addRef();
        *object = part;
        return kResultOk;
    };
    if (FUnknownPrivate::iidEqual(wanted, IEditController::iid)) return give(static_cast<IEditController*>(&controller_));
    if (FUnknownPrivate::iidEqual(wanted, IMidiMapping::iid)) return give(static_cast<IMidiMapping*>(&controller_));
    if (FUnknownPrivate::iidEqual(wanted, IUnitInfo::iid)) return give(static_cast<IUnitInfo*>(&controller_));
    *object = nullptr;
    return kNoInterface;
}

void Plugin::keepContext(FUnknown* context) {
    if (context != nullptr) context->addRef();
    if (context_ != nullptr) context_->release();
    context_ = context;
}

tresult Plugin::initialize(FUnknown* context) {
    return guarded([&] {
        keepContext(context);
        startRounds();
        return kResultOk;
    });
}

#ifdef _WIN32
void Plugin::startRounds() {}
void Plugin::stopRounds() {}
#else
std::unique_ptr<Rounds> Rounds::start(Plugin& plugin, FUnknown* context) {
    std::unique_ptr<Rounds> rounds(new Rounds(plugin));
    if (context == nullptr ||
        context->queryInterface(Linux::IRunLoop::iid, reinterpret_cast<void**>(&rounds->loop_)) != kResultOk ||
        rounds->loop_ == nullptr)
        return rounds->loop_ = nullptr, nullptr;
    if (rounds->loop_->registerTimer(rounds.get(), period) == kResultOk) return rounds;
    rounds->loop_->release();
    return rounds->loop_ = nullptr, nullptr;
}

Rounds::~Rounds() {
    if (loop_ == nullptr) return;
    loop_->unregisterTimer(this);
    loop_->release();
}

void Rounds::onTimer() { plugin_.tellHost(); }

void Plugin::startRounds() {
    stopRounds();
    rounds_ = Rounds::start(*this, context_);
}
void Plugin::stopRounds() { rounds_.reset(); }
#endif

tresult Plugin::terminate() {
    stopRounds();
    setView(nullptr);
    if (window_) window_->close();
    controller_.setComponentHandler(nullptr);
    keepContext(nullptr);
    return kResultOk;
}

tresult Plugin::getBusInfo(MediaType type, BusDirection direction, int32 index, BusInfo& bus) {
    if (index != 0 || getBusCount(type, direction) == 0) return kInvalidArgument;
    bus.mediaType = type;
    bus.direction = direction;
    bus.busType = kMain;
    bus.flags = BusInfo::kDefaultActive;
    bus.channelCount = type == kAudio ? 2 : channels;
    writeText(bus.name, sizeof bus.name / sizeof bus.name[0], type == kAudio ? "Out" : "Notes");
    return kResultOk;
}

tresult Plugin::setActive(TBool isOn) {
    return guarded([&] {
        isOn != 0 ? instrument_.start() : instrument_.stop();
        return kResultOk;
    });
}

// What the host has set for a block that does not come is set here.
tresult Plugin::setProcessing(TBool isOn) {
    return guarded([&] {
        isProcessing_.store(isOn != 0, std::memory_order_relaxed);
        for (int i = 0; i < parameterCount && isOn == 0; ++i)
            if (const double value = asked_.take(i); !std::isnan(value)) setValue(i, value);
        return kResultOk;
    });
}

double Plugin::value(int index) const {
    const double asked = asked_.get(index);
    return std::isnan(asked) ? normalized(index, instrument_.parameters().getParameter(index)) : asked;
}

// What plays hears of it with its blocks, at the frame; set here as well it would come twice, and late.
void Plugin::setValue(int index, double normalizedValue) {
    if (isProcessing_.load(std::memory_order_relaxed))
        asked_.put(index, clampUnit(normalizedValue));
    else
        instrument_.setParameter(index, storedOf(instrument_, index, normalizedValue));
}

tresult Plugin::setupProcessing(ProcessSetup& setup) {
    if (canProcessSampleSize(setup.symbolicSampleSize) != kResultTrue || !isSampleRate(setup.sampleRate)) return kResultFalse;
    return guarded([&] {
        instrument_.setSampleRate(static_cast<float>(setup.sampleRate));
        isOffline_.store(setup.processMode == kOffline, std::memory_order_relaxed);
        return kResultOk;
    });
}

tresult Plugin::save(IBStream* stream) {
    if (stream == nullptr) return kInvalidArgument;
    const bool isSaved = writeState(plugged_.patch(), [stream](void* from, std::size_t size) {
        int32 taken = 0;
        const tresult result = stream->write(from, static_cast<int32>(size), &taken);
        return std::int64_t{result == kResultOk ? taken : -1};
    });
    return isSaved ? kResultOk : kResultFalse;
}

// Some streams call the last, short part a failure.
tresult Plugin::load(IBStream* stream) {
    if (stream == nullptr) return kInvalidArgument;
    bool isOver = false;
    const auto bytes = readState([&](void* to, std::size_t size) {
        int32 given = 0;
        if (!isOver) isOver = stream->read(to, static_cast<int32>(size), &given) != kResultOk;
        return std::int64_t{std::max<int32>(given, 0)};
    });
    if (!bytes) return kResultFalse;
    asked_.clear();
    isRestoring_.store(true, std::memory_order_release);
    const bool isLoaded = plugged_.restore(bytes->data(), bytes->size());
    patchesKnown_.store(instrument_.patchesLoaded(), std::memory_order_release);
    isRestoring_.store(false, std::memory_order_release);
    return isLoaded ? kResultOk : kResultFalse;
}

// ---- the host hears of the window -----------------------------------------------------------------------------------

void Plugin::editBegun(int index) {
    gestures_.begin(index);
    if (IComponentHandler* handler = controller_.handler()) handler->beginEdit(static_cast<ParamID>(index));
}

void Plugin::parameterEdited(int index, float value) {
    asked_.take(index);
    IComponentHandler* const handler = controller_.handler();
    if (handler == nullptr) return;
    performed_.put(index, static_cast<double>(value));
    handler->performEdit(static_cast<ParamID>(index), normalized(index, value));
}

void Plugin::editEnded(int index) {
    gestures_.end(index);
    if (IComponentHandler* handler = controller_.handler()) handler->endEdit(static_cast<ParamID>(index));
}

void Plugin::tellHost() {
    if (!isPatchNew_.exchange(false, std::memory_order_acq_rel)) return;
    patchesKnown_.store(instrument_.patchesLoaded(), std::memory_order_release);
    asked_.clear();
    IComponentHandler* const handler = controller_.handler();
    if (handler == nullptr) return;
    handler->restartComponent(kParamValuesChanged);
    IComponentHandler2* marks = nullptr;
    if (handler->queryInterface(IComponentHandler2::iid, reinterpret_cast<void**>(&marks)) != kResultOk || marks == nullptr)
        return;
    marks->setDirty(true);
    marks->release();
}

// ---- the audio thread ------------------------------------------------------------------------------------------------

Transport Plugin::transportOf(const ProcessContext* context, bool isOffline) {
    Transport transport;
    transport.offline = isOffline;
    if (context == nullptr) return transport;
    transport.known = true;
    if ((context->state & ProcessContext::kTempoValid) != 0) transport.tempo = context->tempo;
    if ((context->state & ProcessContext::kProjectTimeMusicValid) != 0) transport.ppqPos = context->projectTimeMusic;
    return transport;
}

void Plugin::collectController(ParamID id, std::int32_t frame, double value) {
    if (!isController(id)) return;
    const ParamID place = id - firstController;
    const auto channel = static_cast<std::uint8_t>(place / controllersOfChannel);
    const int controller = static_cast<int>(place % controllersOfChannel);
    const auto status = [channel](int nibble) { return static_cast<std::uint8_t>(nibble | channel); };
    if (controller < 128)
        events_.addMidi(frame, status(0xb0), static_cast<std::uint8_t>(controller), midiByte(value));
    else if (controller == kAfterTouch)
        events_.addMidi(frame, status(0xd0), midiByte(value), 0);
    else if (controller == kPitchBend) {
        const int bend = truncateTo(value * 16383.0 + 0.5, 0, 16383);
        events_.addMidi(frame, status(0xe0), static_cast<std::uint8_t>(bend & 127), static_cast<std::uint8_t>(bend >> 7));
    }
}

// A knob in the user's hand does not hear the host, which sends its movements back a block late.
void Plugin::collect(IParameterChanges* changes) {
    const int32 count = changes != nullptr ? changes->getParameterCount() : 0;
    for (int32 i = 0; i < count; ++i) {
        IParamValueQueue* const queue = changes->getParameterData(i);
        if (queue == nullptr) continue;
        const ParamID id = queue->getParameterId();
        const int index = isParameter(id) ? static_cast<int>(id) : -1;
        if (index >= 0 && gestures_.isHeld(index)) continue;
        const int32 points = queue->getPointCount();
        for (int32 k = 0; k < points; ++k) {
            int32 frame = 0;
            ParamValue value = 0;
            if (queue->getPoint(k, frame, value) != kResultOk) continue;
            if (index >= 0)
                events_.addParameter(frame, index, storedOf(instrument_, index, value));
            else
                collectController(id, frame, value);
        }
    }
}

void Plugin::collect(IEventList* events) {
    const int32 count = events != nullptr ? events->getEventCount() : 0;
    for (int32 i = 0; i < count; ++i) {
        Event event{};
        if (events->getEvent(i, event) != kResultOk) continue;
        const auto add = [&](int nibble, int channel, int key, int value) {
            if (key < 0 || key > 127) return;
            events_.addMidi(event.sampleOffset, static_cast<std::uint8_t>(nibble | (channel & 15)),
                            static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(value));
        };
        switch (event.type) {
            case Event::kNoteOnEvent: {
                const NoteOnEvent& note = event.noteOn;
                add(0x90, note.channel, note.pitch, std::max<int>(midiByte(static_cast<double>(note.velocity)), 1));
                break;
            }
            case Event::kNoteOffEvent: {
                const NoteOffEvent& note = event.noteOff;
                add(0x80, note.channel, note.pitch, midiByte(static_cast<double>(note.velocity)));
                break;
            }
            case Event::kPolyPressureEvent: {
                const PolyPressureEvent& key = event.polyPressure;
                add(0xa0, key.channel, key.pitch, midiByte(static_cast<double>(key.pressure)));
                break;
            }
            default: break;
        }
    }
}

void Plugin::accept(IParameterChanges* changes) {
    const int32 count = changes != nullptr ? changes->getParameterCount() : 0;
    for (int32 i = 0; i < count; ++i)
        if (IParamValueQueue* const queue = changes->getParameterData(i);
            queue != nullptr && isParameter(queue->getParameterId())) {
            const int index = static_cast<int>(queue->getParameterId());
            told_.accept(index);
            asked_.take(index);
            performed_.take(index);
        }
}

// The window's own movements were told where they were made; here learnt controllers are, and patches of program changes.
void Plugin::tellValues(IParameterChanges* changes) {
    if (changes == nullptr) return;
    told_.take(patchIsKnown() ? ToldValues::Patches::known : ToldValues::Patches::told, [&](int index, float value) {
        const bool isToldThere = performed_.take(index) == static_cast<double>(value);
        if (isToldThere || gestures_.isHeld(index)) return true;
        asked_.take(index);
        int32 place = 0;
        IParamValueQueue* const queue = changes->addParameterData(static_cast<ParamID>(index), place);
        return queue != nullptr && queue->addPoint(0, normalized(index, value), place) == kResultOk;
    });
}

tresult Plugin::process(ProcessData& data) {
    const tresult result = guarded([&] { return play(data); });
    if (result == kResultOk || data.numOutputs <= 0 || data.outputs == nullptr) return result;
    const AudioBusBuffers& bus = data.outputs[0];
    const auto channelCount = static_cast<std::size_t>(std::max(bus.numChannels, 0));
    const auto frames = static_cast<std::size_t>(std::max(data.numSamples, 0));
    if (data.symbolicSampleSize == kSample64)
        silence(bus.channelBuffers64, channelCount, frames);
    else
        silence(bus.channelBuffers32, channelCount, frames);
    return result;
}

tresult Plugin::play(ProcessData& data) {
    collect(data.inputParameterChanges);
    collect(data.inputEvents);
    const Transport transport = transportOf(data.processContext, isOffline_.load(std::memory_order_relaxed));
    const int frames = std::max(data.numSamples, 0);
    const bool hasOutput = data.numOutputs > 0 && data.outputs != nullptr && data.outputs[0].numChannels > 0;
    const auto play = [&](auto** channelsOfBus) {
        const bool isThere = hasOutput && channelsOfBus != nullptr;
        auto* const left = isThere ? channelsOfBus[0] : nullptr;
        auto* const right = isThere && data.outputs[0].numChannels > 1 ? channelsOfBus[1] : nullptr;
        events_.play(instrument_, left, right, frames, transport);
    };
    if (data.symbolicSampleSize == kSample64)
        play(hasOutput ? data.outputs[0].channelBuffers64 : nullptr);
    else
        play(hasOutput ? data.outputs[0].channelBuffers32 : nullptr);
    if (hasOutput) data.outputs[0].silenceFlags = 0;
    accept(data.inputParameterChanges);
    tellValues(data.outputParameterChanges);
    return kResultOk;
}

// ---- controller ------------------------------------------------------------------------------------------------------

tresult Controller::queryInterface(const TUID wanted, void** object) { return plugin_.queryInterface(wanted, object); }
uint32 Controller::addRef() { return plugin_.addRef(); }
uint32 Controller::release() { return plugin_.release(); }
tresult Controller::initialize(FUnknown*) { return kResultOk; }
tresult Controller::terminate() {
    setComponentHandler(nullptr);
    return kResultOk;
}

// Where a controller of MIDI rests: all at the bottom, but the pitch wheel.
ParamValue restOfController(int hidden) { return hidden % controllersOfChannel == Steinberg::Vst::kPitchBend ? 0.5 : 0; }

tresult Controller::getParameterInfo(int32 place, Steinberg::Vst::ParameterInfo& info) {
    if (place < 0 || place >= getParameterCount()) return kInvalidArgument;
    return guarded([&] {
        info = {};
        if (const int hidden = place - parameterCount; hidden >= 0) {
            info.id = firstController + static_cast<ParamID>(hidden);
            writeText(info.title, 128,
                      "MIDI " + std::to_string(hidden / controllersOfChannel + 1) + "/" +
                          std::to_string(hidden % controllersOfChannel));
            info.defaultNormalizedValue = restOfController(hidden);
            info.flags = Steinberg::Vst::ParameterInfo::kIsHidden;
            return kResultOk;
        }
        info.id = static_cast<ParamID>(place);
        writeText(info.title, 128, hp::name(place));
        writeText(info.shortTitle, 128, hp::name(place));
        writeText(info.units, 128, hp::unit(plugin_.instrument(), place));
        info.stepCount = hp::steps(place);
        info.defaultNormalizedValue = hp::defaultValue(place) / hp::largest(place);
        info.unitId = ParameterModel::parameterLayer(place);
        if (hp::isAutomatable(place)) info.flags |= Steinberg::Vst::ParameterInfo::kCanAutomate;
        if (hp::steps(place) > 1) info.flags |= Steinberg::Vst::ParameterInfo::kIsList;
        if (!hp::isShown(place)) info.flags |= Steinberg::Vst::ParameterInfo::kIsHidden;
        return kResultOk;
    });
}

tresult Controller::getParamStringByValue(ParamID id, ParamValue value, String128 text) {
    if (text == nullptr || !(isParameter(id) || isController(id))) return kInvalidArgument;
    return guarded([&] {
        const int index = static_cast<int>(id);
        writeText(text, 128,
                  isParameter(id) ? hp::text(plugin_.instrument(), index, value * hp::largest(index)) : std::to_string(value));
        return kResultOk;
    });
}

tresult Controller::getParamValueByString(ParamID id, TChar* text, ParamValue& value) {
    if (!isParameter(id) || text == nullptr) return kInvalidArgument;
    return guarded([&] {
        const int index = static_cast<int>(id);
        const auto meant = hp::valueOfText(plugin_.instrument(), index, readText(text, 127));
        if (meant) value = *meant / hp::largest(index);
        return meant ? kResultOk : kResultFalse;
    });
}

ParamValue Controller::normalizedParamToPlain(ParamID id, ParamValue value) {
    return isParameter(id) ? value * hp::largest(static_cast<int>(id)) : value;
}

ParamValue Controller::plainParamToNormalized(ParamID id, ParamValue plain) {
    return isParameter(id) ? plain / hp::largest(static_cast<int>(id)) : plain;
}

ParamValue Controller::getParamNormalized(ParamID id) {
    if (!isParameter(id)) return isController(id) ? restOfController(static_cast<int>(id - firstController)) : 0;
    return plugin_.value(static_cast<int>(id));
}

tresult Controller::setParamNormalized(ParamID id, ParamValue value) {
    if (isController(id)) return kResultOk;
    if (!isParameter(id)) return kInvalidArgument;
    return guarded([&] {
        plugin_.setValue(static_cast<int>(id), value);
        return kResultOk;
    });
}

tresult Controller::setComponentHandler(IComponentHandler* handler) {
    if (handler != nullptr) handler->addRef();
    if (handler_ != nullptr) handler_->release();
    handler_ = handler;
    return kResultOk;
}

IPlugView* Controller::createView(FIDString name) {
    if (name == nullptr || std::strcmp(name, ViewType::kEditor) != 0 || plugin_.window() == nullptr) return nullptr;
    return new (std::nothrow) View(plugin_);
}

tresult Controller::getMidiControllerAssignment(int32 bus, int16 channel, CtrlNumber controller, ParamID& id) {
    if (bus != 0 || channel < 0 || channel >= channels || controller < 0 || controller >= controllersOfChannel)
        return kResultFalse;
    id = firstController + static_cast<ParamID>(channel * controllersOfChannel + controller);
    return kResultTrue;
}

// The layers, below the root that has what is global.
tresult Controller::getUnitInfo(int32 place, UnitInfo& info) {
    if (place < 0 || place >= getUnitCount()) return kResultFalse;
    info.id = place;
    info.parentUnitId = place == 0 ? kNoParentUnitId : kRootUnitId;
    info.programListId = kNoProgramListId;
    writeText(info.name, 128, place == 0 ? "Root" : "Layer " + std::to_string(place));
    return kResultTrue;
}

// ---- the window ------------------------------------------------------------------------------------------------------

View::View(Plugin& plugin) : plugin_(plugin) { plugin_.addRef(); }

View::~View() {
    removed();
    plugin_.release();
}

#ifdef _WIN32
bool View::startTimer() { return true; }
void View::stopTimer() {}
#else
void View::onTimer() {
    plugin_.window()->idle();
    plugin_.tellHost();
}

// The host's loop is the only clock that a window has.
bool View::startTimer() {
    FUnknown* const sources[] = {frame_, plugin_.context()};
    for (FUnknown* source : sources) {
        if (source == nullptr || source->queryInterface(Linux::IRunLoop::iid, reinterpret_cast<void**>(&loop_)) != kResultOk)
            continue;
        if (loop_ != nullptr && loop_->registerTimer(this, idlePeriod) == kResultOk) return true;
        stopTimer();
    }
    return false;
}

void View::stopTimer() {
    if (loop_ == nullptr) return;
    loop_->unregisterTimer(this);
    loop_->release();
    loop_ = nullptr;
}
#endif

tresult View::attached(void* parent, FIDString type) {
    if (isPlatformTypeSupported(type) != kResultTrue || parent == nullptr) return kResultFalse;
    stopTimer();
    plugin_.setView(this);
    if (plugin_.window()->open(reinterpret_cast<std::uintptr_t>(parent)) && startTimer()) return kResultOk;
    removed();
    return kResultFalse;
}

tresult View::removed() {
    stopTimer();
    if (plugin_.view() != this) return kResultOk;
    plugin_.window()->close();
    plugin_.setView(nullptr);
    return kResultOk;
}

tresult View::onKeyDown(char16 character, int16 number, int16 modifiers) {
    const FaceWindow::Key key{static_cast<char32_t>(character), number, (modifiers & kShiftKey) != 0,
                              (modifiers & kAlternateKey) != 0, (modifiers & (kCommandKey | kControlKey)) != 0};
    return plugin_.window()->onKeyDown(key) ? kResultTrue : kResultFalse;
}

tresult View::getSize(ViewRect* size) {
    if (size == nullptr) return kInvalidArgument;
    const FaceWindow::Size own = plugin_.window()->size();
    *size = ViewRect(0, 0, own.width, own.height);
    return kResultTrue;
}

}  // namespace

tresult makePlugin(const TUID wanted, void** object) noexcept {
    return guarded([&] {
        auto* const plugin = std::make_unique<Plugin>().release();
        const tresult result = plugin->queryInterface(wanted, object);
        plugin->release();
        return result;
    });
}

}  // namespace vantoric::vst3_face

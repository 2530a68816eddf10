#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>

#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivstevents.h"
#include "pluginterfaces/vst/ivstmidicontrollers.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"
#include "pluginterfaces/vst/ivstprocesscontext.h"
#include "pluginterfaces/vst/ivstunits.h"
#include "tests/formats/format_host.h"

namespace Steinberg {
DEF_CLASS_IID(IPlugView)
DEF_CLASS_IID(IPlugFrame)
#if SMTG_OS_LINUX
namespace Linux {
DEF_CLASS_IID(IRunLoop)
DEF_CLASS_IID(ITimerHandler)
}  // namespace Linux
#endif
namespace Vst {
DEF_CLASS_IID(IComponent)
DEF_CLASS_IID(IAudioProcessor)
DEF_CLASS_IID(IEditController)
DEF_CLASS_IID(IComponentHandler)
DEF_CLASS_IID(IComponentHandler2)
DEF_CLASS_IID(IUnitInfo)
DEF_CLASS_IID(IMidiMapping)
DEF_CLASS_IID(IParameterChanges)
DEF_CLASS_IID(IParamValueQueue)
DEF_CLASS_IID(IEventList)
}  // namespace Vst
}  // namespace Steinberg

namespace testhost {
namespace {

using namespace Steinberg;

// What every object of a host has that nobody counts.
template <class Interface>
class Uncounted : public Interface {
public:
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        *object = FUnknownPrivate::iidEqual(wanted, Interface::iid) ? this : nullptr;
        return *object != nullptr ? kResultOk : kNoInterface;
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
};

class Queue final : public Uncounted<Vst::IParamValueQueue> {
public:
    explicit Queue(Vst::ParamID number) : number_(number) {}
    Vst::ParamID PLUGIN_API getParameterId() override { return number_; }
    int32 PLUGIN_API getPointCount() override { return static_cast<int32>(points.size()); }
    tresult PLUGIN_API getPoint(int32 i, int32& frame, Vst::ParamValue& value) override {
        std::tie(frame, value) = points[static_cast<std::size_t>(i)];
        return kResultOk;
    }
    tresult PLUGIN_API addPoint(int32 frame, Vst::ParamValue value, int32& i) override {
        i = getPointCount();
        points.emplace_back(frame, value);
        return kResultOk;
    }
    std::vector<std::pair<int32, double>> points;

private:
    Vst::ParamID number_;
};

class Changes final : public Uncounted<Vst::IParameterChanges> {
public:
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(queues.size()); }
    Vst::IParamValueQueue* PLUGIN_API getParameterData(int32 i) override { return queues[static_cast<std::size_t>(i)].get(); }
    Vst::IParamValueQueue* PLUGIN_API addParameterData(const Vst::ParamID& number, int32& i) override {
        i = getParameterCount();
        return queues.emplace_back(std::make_unique<Queue>(number)).get();
    }
    void add(Vst::ParamID number, int frame, double value) {
        int32 place = 0;
        for (const auto& queue : queues)
            if (queue->getParameterId() == number) return void(queue->addPoint(frame, value, place));
        addParameterData(number, place)->addPoint(frame, value, place);
    }
    std::vector<std::unique_ptr<Queue>> queues;
};

class Events final : public Uncounted<Vst::IEventList> {
public:
    int32 PLUGIN_API getEventCount() override { return static_cast<int32>(events.size()); }
    tresult PLUGIN_API getEvent(int32 i, Vst::Event& event) override {
        event = events[static_cast<std::size_t>(i)];
        return kResultOk;
    }
    tresult PLUGIN_API addEvent(Vst::Event& event) override {
        events.push_back(event);
        return kResultOk;
    }
    std::vector<Vst::Event> events;
};

class Stream final : public Uncounted<IBStream> {
public:
    Stream(Bytes content, std::size_t most) : bytes(std::move(content)), piece(most) {}
    tresult PLUGIN_API read(void* to, int32 size, int32* done) override {
        if (fault.hasBegun(at)) return wrong(size, done);
        const std::size_t given = std::min({static_cast<std::size_t>(size), fault.most(piece, turn++), bytes.size() - at});
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), given, static_cast<std::uint8_t*>(to));
        at += given;
        if (done != nullptr) *done = static_cast<int32>(given);
        return kResultOk;
    }
    tresult PLUGIN_API write(void* from, int32 size, int32* done) override {
        if (fault.hasBegun(bytes.size())) return wrong(size, done);
        const std::size_t taken = std::min(static_cast<std::size_t>(size), fault.most(piece, turn++));
        const auto* first = static_cast<const std::uint8_t*>(from);
        bytes.insert(bytes.end(), first, first + taken);
        if (done != nullptr) *done = static_cast<int32>(taken);
        return kResultOk;
    }
    tresult PLUGIN_API seek(int64, int32, int64*) override { return kNotImplemented; }
    tresult PLUGIN_API tell(int64*) override { return kNotImplemented; }
    Bytes bytes;
    StreamFault fault;
    std::size_t piece, at = 0, turn = 0;

private:
    // What a broken stream says that was asked to move so many bytes.
    tresult wrong(int32 size, int32* done) const {
        if (done != nullptr) *done = fault.kind == StreamFault::tooMuch ? size + 1 : fault.kind == StreamFault::error ? -1 : 0;
        return fault.kind == StreamFault::error ? kResultFalse : kResultOk;
    }
};

#if SMTG_OS_LINUX
constexpr const char* moduleEntry = "ModuleEntry";

class RunLoop final : public Uncounted<Linux::IRunLoop> {
public:
    tresult PLUGIN_API registerEventHandler(Linux::IEventHandler*, Linux::FileDescriptor) override { return kNotImplemented; }
    tresult PLUGIN_API unregisterEventHandler(Linux::IEventHandler*) override { return kNotImplemented; }
    tresult PLUGIN_API registerTimer(Linux::ITimerHandler* handler, Linux::TimerInterval) override {
        timer = handler;
        return kResultOk;
    }
    tresult PLUGIN_API unregisterTimer(Linux::ITimerHandler* handler) override {
        if (handler == timer) timer = nullptr;
        return kResultOk;
    }
    Linux::ITimerHandler* timer = nullptr;
};

class Frame final : public Uncounted<IPlugFrame> {
public:
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (FUnknownPrivate::iidEqual(wanted, Linux::IRunLoop::iid)) return *object = &loop, kResultOk;
        return Uncounted::queryInterface(wanted, object);
    }
    tresult PLUGIN_API resizeView(IPlugView*, ViewRect* size) override {
        sizes.emplace_back(size->getWidth(), size->getHeight());
        return kResultOk;
    }
    RunLoop loop;
    std::vector<std::pair<int, int>> sizes;
};
#else
// Windows bring their own timers.
constexpr const char* moduleEntry = "InitDll";
#endif

// What a plug-in tells its host.
class Handler final : public Uncounted<Vst::IComponentHandler>, public Vst::IComponentHandler2 {
public:
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (FUnknownPrivate::iidEqual(wanted, Vst::IComponentHandler2::iid))
            return *object = static_cast<Vst::IComponentHandler2*>(this), kResultOk;
        return Uncounted::queryInterface(wanted, object);
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
    tresult PLUGIN_API beginEdit(Vst::ParamID id) override { return tell(Told::begin, id, 0); }
    tresult PLUGIN_API performEdit(Vst::ParamID id, Vst::ParamValue value) override { return tell(Told::value, id, value); }
    tresult PLUGIN_API endEdit(Vst::ParamID id) override { return tell(Told::end, id, 0); }
    tresult PLUGIN_API restartComponent(int32) override {
        ++restarts;
        return kResultOk;
    }
    tresult PLUGIN_API setDirty(TBool isDirty) override {
        if (isDirty) onDirty();
        return kResultOk;
    }
    tresult PLUGIN_API requestOpenEditor(FIDString) override { return kResultFalse; }
    tresult PLUGIN_API startGroupEdit() override { return kResultOk; }
    tresult PLUGIN_API finishGroupEdit() override { return kResultOk; }

    std::function<void(Told::Kind, Vst::ParamID, double)> onTold;
    std::function<void()> onDirty;
    int restarts = 0;

private:
    tresult tell(Told::Kind kind, Vst::ParamID id, double value) {
        onTold(kind, id, value);
        return kResultOk;
    }
};

// The host as the plug-in is given it.
#if SMTG_OS_LINUX
class Application final : public Uncounted<FUnknown> {
public:
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (FUnknownPrivate::iidEqual(wanted, Linux::IRunLoop::iid)) return *object = &loop, kResultOk;
        return Uncounted::queryInterface(wanted, object);
    }
    RunLoop loop;
};
#else
class Application final : public Uncounted<FUnknown> {};
#endif

// Two channels of samples of 64 bits.
struct Doubles {
    explicit Doubles(int frames)
        : left(static_cast<std::size_t>(frames), std::numeric_limits<double>::quiet_NaN()), right(left) {}
    void roundTo(Sound& sound) const {
        sound.left.assign(left.begin(), left.end());
        sound.right.assign(right.begin(), right.end());
    }
    std::vector<double> left, right;
    double* channels[2] = {left.data(), right.data()};
};

class Vst3Host final : public FormatHost {
public:
    Vst3Host() {
        using Entry = bool (*)(void*);
        using FactoryEntry = IPluginFactory* (*)();
        reinterpret_cast<Entry>(loadModule(VST3_MODULE, moduleEntry))(nullptr);
        factory_ = reinterpret_cast<FactoryEntry>(loadModule(VST3_MODULE, "GetPluginFactory"))();
        factory_->getClassInfo(0, &info_);
        component_ = makeComponent();
        if (component_ == nullptr) throw std::runtime_error("no VST 3 instance");
        component_->queryInterface(Vst::IAudioProcessor::iid, reinterpret_cast<void**>(&processor_));
        component_->queryInterface(Vst::IEditController::iid, reinterpret_cast<void**>(&controller_));
        component_->queryInterface(Vst::IMidiMapping::iid, reinterpret_cast<void**>(&mapping_));
        component_->queryInterface(Vst::IUnitInfo::iid, reinterpret_cast<void**>(&units_));
        handler_.onTold = [this](Told::Kind kind, Vst::ParamID id, double value) {
            note({kind, static_cast<int>(id), controller_->normalizedParamToPlain(id, value)});
        };
        handler_.onDirty = [this] { noteDirty(); };
        component_->initialize(&application_);
        controller_->initialize(&application_);
        controller_->setComponentHandler(&handler_);
    }
    ~Vst3Host() override {
        controller_->terminate();
        component_->terminate();
        units_->release();
        mapping_->release();
        controller_->release();
        processor_->release();
        component_->release();
    }
    bool makesAnother() override {
        Vst::IComponent* made = nullptr;
        called([&] { made = makeComponent(); });
        if (made == nullptr) return false;
        tresult answer = kResultFalse;
        called([&] { answer = made->initialize(&application_); });
        called([&] {
            made->terminate();
            made->release();
        });
        return answer == kResultOk;
    }
    void start(double rate, int mostFrames) override {
        Vst::ProcessSetup setup{isOffline_ ? Vst::kOffline : Vst::kRealtime, sampleSize_, mostFrames, rate};
        called([&] {
            processor_->setupProcessing(setup);
            component_->setActive(true);
            processor_->setProcessing(true);
        });
    }
    bool takesRate(double rate) override {
        Vst::ProcessSetup setup{Vst::kRealtime, sampleSize_, 64, rate};
        return processor_->setupProcessing(setup) == kResultOk;
    }
    void stop() override {
        called([this] {
            processor_->setProcessing(false);
            component_->setActive(false);
        });
    }
    bool useDoubles() override {
        sampleSize_ = Vst::kSample64;
        return processor_->canProcessSampleSize(sampleSize_) == kResultTrue;
    }
    Sound render(int frames, const std::vector<Event>& events, Outputs outputs) override {
        Changes in, out;
        Events notes;
        for (const Event& event : events) add(in, notes, event);
        constexpr float unwritten = std::numeric_limits<float>::quiet_NaN();
        Sound sound;
        sound.left.assign(static_cast<std::size_t>(frames), unwritten);
        sound.right = sound.left;
        float* channels[] = {sound.left.data(), sound.right.data()};
        Vst::AudioBusBuffers bus;
        bus.numChannels = outputs == left ? 1 : 2;
        Doubles doubles(frames);
        if (sampleSize_ == Vst::kSample64)
            bus.channelBuffers64 = doubles.channels;
        else
            bus.channelBuffers32 = channels;
        Vst::ProcessData data;
        data.processMode = Vst::kRealtime;
        data.symbolicSampleSize = sampleSize_;
        data.numSamples = frames;
        data.numOutputs = outputs == none ? 0 : 1;
        data.outputs = outputs == none ? nullptr : &bus;
        data.inputParameterChanges = &in;
        data.outputParameterChanges = &out;
        data.inputEvents = &notes;
        Vst::ProcessContext context{};
        context.sampleRate = 48000;
        if (!song_.empty()) {
            context.state = Vst::ProcessContext::kTempoValid | Vst::ProcessContext::kProjectTimeMusicValid;
            context.tempo = song_.front().tempo;
            context.projectTimeMusic = song_.front().beats;
            data.processContext = &context;
        }
        called([&] { processor_->process(data); });
        if (sampleSize_ == Vst::kSample64) doubles.roundTo(sound);
        for (const auto& queue : out.queues)
            for (const auto& point : queue->points)
                note({Told::value, static_cast<int>(queue->getParameterId()),
                      controller_->normalizedParamToPlain(queue->getParameterId(), point.second)});
        return sound;
    }
    void loop() override {
#if SMTG_OS_LINUX
        if (application_.loop.timer != nullptr) application_.loop.timer->onTimer();
#endif
    }
    void setBesideBlocks(int index, double plain) override {
        const auto id = static_cast<Vst::ParamID>(index);
        controller_->setParamNormalized(id, controller_->plainParamToNormalized(id, plain));
    }
    int parameterCount() override { return controller_->getParameterCount(); }
    std::optional<ParameterFacts> facts(int place) override {
        Vst::ParameterInfo info;
        if (controller_->getParameterInfo(place, info) != kResultOk) return {};
        ParameterFacts facts;
        facts.name = narrow(info.title);
        facts.unit = narrow(info.units);
        Vst::UnitInfo unit;
        if (units_->getUnitInfo(info.unitId, unit) == kResultOk) facts.group = narrow(unit.name);
        facts.steps = info.stepCount;
        facts.largest = controller_->normalizedParamToPlain(info.id, 1.0);
        facts.defaultValue = controller_->normalizedParamToPlain(info.id, info.defaultNormalizedValue);
        facts.isAutomatable = (info.flags & Vst::ParameterInfo::kCanAutomate) != 0;
        facts.isHidden = (info.flags & Vst::ParameterInfo::kIsHidden) != 0;
        Vst::String128 text = {};
        if (controller_->getParamStringByValue(info.id, info.defaultNormalizedValue, text) == kResultOk)
            facts.textOfDefault = narrow(text);
        if (double value = 0; controller_->getParamValueByString(info.id, text, value) == kResultOk)
            facts.defaultByText = controller_->normalizedParamToPlain(info.id, value);
        return facts;
    }
    bool hasText(std::uint32_t id) override {
        Vst::String128 text = {};
        return controller_->getParamStringByValue(id, 0, text) == kResultOk;
    }
    Bytes save(std::size_t piece) override {
        Stream stream({}, piece);
        stream.fault = fault_;
        tresult answer = kResultFalse;
        called([&] { answer = component_->getState(&stream); });
        return answer == kResultOk ? stream.bytes : Bytes();
    }
    bool load(const Bytes& state, std::size_t piece) override {
        Stream stream(state, piece);
        stream.fault = fault_;
        tresult answer = kResultFalse;
        called([&] { answer = component_->setState(&stream); });
        // As hosts do, the controller gets the component's state too, and one of its own.
        Stream known(state, piece), own(state, piece);
        known.fault = own.fault = fault_;
        called([&] { controller_->setComponentState(&known); });
        called([&] { controller_->setState(&own); });
        return answer == kResultOk;
    }
    double parameter(int index) override { return controller_->getParamNormalized(static_cast<Vst::ParamID>(index)); }

#if SMTG_OS_LINUX
    bool openWindow(std::uintptr_t parent) override {
        IPlugView* view = nullptr;
        called([&] { view = controller_->createView(Vst::ViewType::kEditor); });
        if (view == nullptr) return false;
        views_.push_back(view);
        view->setFrame(&frame_);
        ViewRect size;
        bool isShown = false;
        called([&] {
            isShown = view->getSize(&size) == kResultTrue && size.getWidth() > 0 &&
                      view->attached(reinterpret_cast<void*>(parent), kPlatformTypeX11EmbedWindowID) == kResultOk;
        });
        if (!isShown) {
            called([&] { view->release(); });
            views_.pop_back();
        }
        return isShown && frame_.loop.timer != nullptr;
    }
    void idle() override {
        if (frame_.loop.timer != nullptr) called([this] { frame_.loop.timer->onTimer(); });
        sizes_.insert(sizes_.end(), frame_.sizes.begin(), frame_.sizes.end());
        frame_.sizes.clear();
    }
    bool mayOpenTwice() const override { return true; }
    void closeWindow() override {
        called([this] {
            views_.front()->removed();
            views_.front()->release();
        });
        views_.erase(views_.begin());
    }
#else
    bool openWindow(std::uintptr_t) override { return false; }
    void idle() override {}
    void closeWindow() override {}
#endif

private:
    Vst::IComponent* makeComponent() {
        void* made = nullptr;
        return factory_->createInstance(info_.cid, Vst::IComponent::iid, &made) == kResultOk ? static_cast<Vst::IComponent*>(made)
                                                                                             : nullptr;
    }
    static std::string narrow(const Vst::TChar* text) {
        std::string made;
        for (; *text != 0; ++text) made += static_cast<char>(*text);
        return made;
    }
    static void addPressure(Events& notes, const Event& event) {
        Vst::Event made{};
        made.sampleOffset = event.frame;
        made.type = Vst::Event::kPolyPressureEvent;
        made.polyPressure = {static_cast<int16>(event.status & 15), event.data1, static_cast<float>(event.data2) / 127.0f, -1};
        notes.events.push_back(made);
    }
    void add(Changes& changes, Events& notes, const Event& event) {
        if (event.kind == Event::value)
            return changes.add(static_cast<Vst::ParamID>(event.index), event.frame, event.plain / event.largest);
        if (event.kind != Event::midi) return;
        const auto control = [&](int controller, double to) {
            Vst::ParamID number = 0;
            const auto asked = static_cast<Vst::CtrlNumber>(controller);
            if (mapping_->getMidiControllerAssignment(0, event.status & 15, asked, number) == kResultTrue)
                changes.add(number, event.frame, to);
        };
        switch (event.status & 0xf0) {
            case 0xa0: return addPressure(notes, event);
            case 0xb0: return control(event.data1, event.data2 / 127.0);
            case 0xc0: return;  // the format has no way for it
            case 0xd0: return control(Vst::kAfterTouch, event.data1 / 127.0);
            case 0xe0: return control(Vst::kPitchBend, (event.data1 | event.data2 << 7) / 16383.0);
            default: break;
        }
        Vst::Event note{};
        note.sampleOffset = event.frame;
        note.type = event.status >= 0x90 ? Vst::Event::kNoteOnEvent : Vst::Event::kNoteOffEvent;
        if (note.type == Vst::Event::kNoteOnEvent)
            note.noteOn = {0, event.data1, 0.0f, static_cast<float>(event.data2) / 127.0f, 0, -1};
        else
            note.noteOff = {0, event.data1, static_cast<float>(event.data2) / 127.0f, -1, 0.0f};
        notes.events.push_back(note);
    }

    IPluginFactory* factory_ = nullptr;
    PClassInfo info_;
    Vst::IComponent* component_ = nullptr;
    Vst::IAudioProcessor* processor_ = nullptr;
    Vst::IEditController* controller_ = nullptr;
    Vst::IMidiMapping* mapping_ = nullptr;
    std::vector<IPlugView*> views_;
    int32 sampleSize_ = Vst::kSample32;
    Vst::IUnitInfo* units_ = nullptr;
#if SMTG_OS_LINUX
    Frame frame_;
#endif
    Handler handler_;
    Application application_;
};

}  // namespace

std::unique_ptr<FormatHost> makeVst3Host() { return std::make_unique<Vst3Host>(); }

}  // namespace testhost

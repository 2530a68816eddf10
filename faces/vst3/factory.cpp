// What a VST 3 module exports, and the factory behind it.
#include <cstring>

#include "base/version.h"
#include "faces/common/identity.h"
#include "faces/vst3/vst3_plugin.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"

namespace vantoric::vst3_face {
namespace {

using namespace Steinberg;

class Factory final : public IPluginFactory2 {
public:
    tresult PLUGIN_API queryInterface(const TUID wanted, void** object) override {
        if (object == nullptr) return kInvalidArgument;
        QUERY_INTERFACE(wanted, object, FUnknown::iid, IPluginFactory2)
        QUERY_INTERFACE(wanted, object, IPluginFactory::iid, IPluginFactory2)
        QUERY_INTERFACE(wanted, object, IPluginFactory2::iid, IPluginFactory2)
        *object = nullptr;
        return kNoInterface;
    }
    // There is one for the module's whole life.
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }

    tresult PLUGIN_API getFactoryInfo(PFactoryInfo* info) override {
        if (info == nullptr) return kInvalidArgument;
        *info = PFactoryInfo(identity::vendor, identity::homePage, "", PFactoryInfo::kUnicode);
        return kResultOk;
    }
    int32 PLUGIN_API countClasses() override { return 1; }
    tresult PLUGIN_API getClassInfo(int32 index, PClassInfo* info) override {
        if (index != 0 || info == nullptr) return kInvalidArgument;
        *info = PClassInfo(classId, PClassInfo::kManyInstances, kVstAudioEffectClass, identity::name);
        return kResultOk;
    }
    tresult PLUGIN_API getClassInfo2(int32 index, PClassInfo2* info) override {
        if (index != 0 || info == nullptr) return kInvalidArgument;
        *info = PClassInfo2(classId, PClassInfo::kManyInstances, kVstAudioEffectClass, identity::name, 0,
                            Vst::PlugType::kInstrumentSynth, identity::vendor, versionText, kVstVersionString);
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(FIDString id, FIDString kind, void** object) override {
        if (object == nullptr) return kInvalidArgument;
        *object = nullptr;
        if (id == nullptr || kind == nullptr || std::memcmp(id, classId, sizeof(TUID)) != 0) return kNoInterface;
        TUID wanted;
        std::memcpy(wanted, kind, sizeof wanted);
        return makePlugin(wanted, object);
    }
};

}  // namespace
}  // namespace vantoric::vst3_face

#ifdef _WIN32
#define VANTORIC_EXPORT extern "C" __declspec(dllexport)
VANTORIC_EXPORT bool InitDll() { return true; }
VANTORIC_EXPORT bool ExitDll() { return true; }
#else
#define VANTORIC_EXPORT extern "C" __attribute__((visibility("default")))
VANTORIC_EXPORT bool ModuleEntry(void*) { return true; }
VANTORIC_EXPORT bool ModuleExit() { return true; }
#endif

VANTORIC_EXPORT Steinberg::IPluginFactory* PLUGIN_API GetPluginFactory() {
    static vantoric::vst3_face::Factory factory;
    return &factory;
}

#include "faces/standalone/wasapi_device.h"

// Defines the identifiers of the interfaces, of which the libraries lack some.
#include <initguid.h>
#include <windows.h>
// After windows.h: they need its types.
#include <audioclient.h>
#include <avrt.h>
#include <functiondiscoverykeys_devpkey.h>
#include <ksmedia.h>
#include <mmdeviceapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <future>
#include <thread>
#include <utility>

#include "platform/wide_text.h"

namespace vantoric::standalone {
namespace {

constexpr double unitsInSecond = 1e7;  // the system's times are in 100 ns
constexpr int patience = 1000;         // milliseconds without a call of the mixer
constexpr int mostWaits = 3;           // of these, until the device counts as gone

// A counted object of the system.
template <class Interface>
class Counted {
public:
    Counted() = default;
    ~Counted() { reset(); }
    Counted(Counted&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Counted& operator=(Counted&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    Interface* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    Interface* get() const { return object_; }
    // Where a call of the system puts the object.
    Interface** place() {
        reset();
        return &object_;
    }
    void** untypedPlace() { return reinterpret_cast<void**>(place()); }

private:
    void reset() {
        if (object_ != nullptr) object_->Release();
        object_ = nullptr;
    }
    Interface* object_ = nullptr;
};

// The thread may call the system's objects while this stands.
class ObjectUse {
public:
    ObjectUse() : isBegun_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    ~ObjectUse() {
        if (isBegun_) CoUninitialize();
    }
    ObjectUse(const ObjectUse&) = delete;
    ObjectUse& operator=(const ObjectUse&) = delete;

private:
    bool isBegun_;
};

std::string reasonOf(HRESULT result) {
    switch (result) {
        case E_NOTFOUND: return "there is no sound device";
        case AUDCLNT_E_DEVICE_IN_USE: return "another program has it for itself";
        case AUDCLNT_E_SERVICE_NOT_RUNNING: return "the system's sound service does not run";
        case AUDCLNT_E_DEVICE_INVALIDATED: return "it has gone";
        default: break;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "error %08lx", static_cast<unsigned long>(result));
    return text.data();
}

HRESULT makeEnumerator(Counted<IMMDeviceEnumerator>& enumerator) {
    return CoCreateInstance(CLSID_MMDeviceEnumerator, nullptr, CLSCTX_ALL, IID_IMMDeviceEnumerator, enumerator.untypedPlace());
}

WasapiName nameOf(IMMDevice& device) {
    WasapiName name;
    LPWSTR id = nullptr;
    if (SUCCEEDED(device.GetId(&id)) && id != nullptr) name.id = platform::utf8(id);
    CoTaskMemFree(id);
    Counted<IPropertyStore> facts;
    PROPVARIANT text;
    PropVariantInit(&text);
    if (SUCCEEDED(device.OpenPropertyStore(STGM_READ, facts.place())) &&
        SUCCEEDED(facts->GetValue(PKEY_Device_FriendlyName, &text)) && text.vt == VT_LPWSTR && text.pwszVal != nullptr)
        name.name = platform::utf8(text.pwszVal);
    PropVariantClear(&text);
    if (name.name.empty()) name.name = name.id;
    return name;
}

// Calls visit(device, name) for each until it returns true; whether it did.
template <class Visit>
bool visitDevices(Visit&& visit) {
    Counted<IMMDeviceEnumerator> enumerator;
    Counted<IMMDeviceCollection> all;
    UINT count = 0;
    if (FAILED(makeEnumerator(enumerator)) || FAILED(enumerator->EnumAudioEndpoints(eRender, DEVICE_STATE_ACTIVE, all.place())) ||
        FAILED(all->GetCount(&count)))
        return false;
    for (UINT i = 0; i < count; ++i) {
        Counted<IMMDevice> device;
        if (SUCCEEDED(all->Item(i, device.place())) && visit(device, nameOf(*device.get()))) return true;
    }
    return false;
}

HRESULT findDevice(const std::string& wanted, Counted<IMMDevice>& found) {
    if (wanted == "default") {
        Counted<IMMDeviceEnumerator> enumerator;
        const HRESULT result = makeEnumerator(enumerator);
        return FAILED(result) ? result : enumerator->GetDefaultAudioEndpoint(eRender, eConsole, found.place());
    }
    const bool isThere = visitDevices([&](Counted<IMMDevice>& device, const WasapiName& name) {
        if (name.name != wanted && name.id != wanted) return false;
        found = std::move(device);
        return true;
    });
    return isThere ? S_OK : E_NOTFOUND;
}

WAVEFORMATEXTENSIBLE stereoFloats(int rate) {
    WAVEFORMATEXTENSIBLE form{};
    form.Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    form.Format.nChannels = 2;
    form.Format.nSamplesPerSec = static_cast<DWORD>(rate);
    form.Format.wBitsPerSample = 32;
    form.Format.nBlockAlign = 8;
    form.Format.nAvgBytesPerSec = form.Format.nSamplesPerSec * form.Format.nBlockAlign;
    form.Format.cbSize = sizeof form - sizeof form.Format;
    form.Samples.wValidBitsPerSample = 32;
    form.dwChannelMask = SPEAKER_FRONT_LEFT | SPEAKER_FRONT_RIGHT;
    form.SubFormat = KSDATAFORMAT_SUBTYPE_IEEE_FLOAT;
    return form;
}

class WasapiDevice final : public SoundDevice {
public:
    explicit WasapiDevice(Player& player) : player_(player), bell_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~WasapiDevice() override {
        isEnding_ = true;
        if (bell_ != nullptr) SetEvent(bell_);
        if (thread_.joinable()) thread_.join();
        if (bell_ != nullptr) CloseHandle(bell_);
    }

    // Opens the device and plays. What goes wrong otherwise.
    HRESULT start(const std::string& name, int rate, int period) {
        if (bell_ == nullptr) return E_OUTOFMEMORY;
        Counted<IMMDevice> device;
        HRESULT result = findDevice(name, device);
        if (SUCCEEDED(result)) result = prepareClient(*device.get(), rate, period);
        if (SUCCEEDED(result)) result = client_->SetEventHandle(bell_);
        if (SUCCEEDED(result)) result = client_->GetBufferSize(&bufferFrames_);
        if (SUCCEEDED(result)) result = client_->GetService(IID_IAudioRenderClient, output_.untypedPlace());
        if (FAILED(result)) return result;
        REFERENCE_TIME usual = 0, least = 0;
        if (SUCCEEDED(client_->GetDevicePeriod(&usual, &least)))
            period_ = std::max(1, static_cast<int>(static_cast<double>(usual) * rate_ / unitsInSecond + 0.5));
        player_.prepare(rate_);
        left_.resize(bufferFrames_);  // here, as in the thread nobody could say that there is no memory
        right_.resize(bufferFrames_);
        std::promise<HRESULT> started;
        auto outcome = started.get_future();
        thread_ = std::thread([this, &started] { run(started); });
        return outcome.get();
    }

    std::string system() const override { return "WASAPI"; }
    int period() const override { return period_; }
    std::string priority() const override {
        return hasPriority_ ? "priority of the system's sound service" : "ordinary priority";
    }
    bool isLost() const override { return isLost_; }

private:
    // With what is wanted, converted by the system; where it does not, as its mixer is set.
    HRESULT prepareClient(IMMDevice& device, int rate, int period) {
        const auto activate = [&] { return device.Activate(IID_IAudioClient, CLSCTX_ALL, nullptr, client_.untypedPlace()); };
        const auto initialize = [&](const WAVEFORMATEXTENSIBLE& form, DWORD flags) {
            rate_ = static_cast<int>(form.Format.nSamplesPerSec);
            const auto ahead = static_cast<REFERENCE_TIME>(2 * period * unitsInSecond / rate_);
            return client_->Initialize(AUDCLNT_SHAREMODE_SHARED, AUDCLNT_STREAMFLAGS_EVENTCALLBACK | flags, ahead, 0,
                                       &form.Format, nullptr);
        };
        HRESULT result = activate();
        if (FAILED(result)) return result;
        result = initialize(stereoFloats(rate), AUDCLNT_STREAMFLAGS_AUTOCONVERTPCM | AUDCLNT_STREAMFLAGS_SRC_DEFAULT_QUALITY);
        if (SUCCEEDED(result)) return result;
        result = activate();  // one that refused once takes nothing more
        WAVEFORMATEX* mix = nullptr;
        if (FAILED(result) || FAILED(result = client_->GetMixFormat(&mix))) return result;
        const int mixRate = static_cast<int>(mix->nSamplesPerSec);
        CoTaskMemFree(mix);
        return initialize(stereoFloats(mixRate), 0);
    }

    void run(std::promise<HRESULT>& started) {
        const ObjectUse use;
        DWORD task = 0;
        const HANDLE served = AvSetMmThreadCharacteristicsW(L"Pro Audio", &task);
        hasPriority_ = served != nullptr;
        const HRESULT result = client_->Start();
        const bool plays = SUCCEEDED(result);
        started.set_value(result);
        for (int waits = 0; plays && !isEnding_ && !isLost_;) {
            if (WaitForSingleObject(bell_, patience) != WAIT_OBJECT_0) {
                isLost_ = ++waits == mostWaits;
            } else {
                waits = 0;
                isLost_ = !fill();
            }
        }
        client_->Stop();
        if (served != nullptr) AvRevertMmThreadCharacteristics(served);
    }

    // Plays as much as the mixer has room for. False if the device has gone.
    bool fill() {
        UINT32 waiting = 0;
        if (FAILED(client_->GetCurrentPadding(&waiting)) || waiting > bufferFrames_) return false;
        if (waiting == 0 && hasPlayed_) player_.noteDropout();
        const UINT32 frames = bufferFrames_ - waiting;
        if (frames == 0) return true;
        BYTE* bytes = nullptr;
        if (FAILED(output_->GetBuffer(frames, &bytes))) return false;
        player_.play(left_.data(), right_.data(), static_cast<int>(frames));
        auto* to = reinterpret_cast<float*>(bytes);
        for (UINT32 i = 0; i < frames; ++i) {
            *to++ = std::clamp(left_[i], -1.0f, 1.0f);
            *to++ = std::clamp(right_[i], -1.0f, 1.0f);
        }
        hasPlayed_ = true;
        return SUCCEEDED(output_->ReleaseBuffer(frames, 0));
    }

    const ObjectUse use_;
    Player& player_;
    HANDLE bell_;
    Counted<IAudioClient> client_;
    Counted<IAudioRenderClient> output_;
    UINT32 bufferFrames_ = 0;
    int rate_ = 0, period_ = 1;
    std::vector<float> left_, right_;
    bool hasPlayed_ = false;
    std::atomic<bool> isEnding_{false}, isLost_{false}, hasPriority_{false};
    std::thread thread_;
};

}  // namespace

std::vector<WasapiName> wasapiDevices() {
    const ObjectUse use;
    std::vector<WasapiName> names;
    visitDevices([&names](Counted<IMMDevice>&, WasapiName name) {
        names.push_back(std::move(name));
        return false;
    });
    return names;
}

std::unique_ptr<SoundDevice> openWasapi(Player& player, const std::string& name, int rate, int period, std::string& problem) {
    auto device = std::make_unique<WasapiDevice>(player);
    HRESULT result = E_OUTOFMEMORY;  // also where memory or threads are short here
    try {
        result = device->start(name, rate, period);
    } catch (const std::exception&) {
        result = E_OUTOFMEMORY;
    }
    if (SUCCEEDED(result)) return device;
    problem = "WASAPI: device \"" + name + "\": " + reasonOf(result);
    return nullptr;
}

}  // namespace vantoric::standalone

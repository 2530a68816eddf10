#include "faces/standalone/alsa_device.h"

#include <alsa/asoundlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <future>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "faces/standalone/realtime.h"
#include "faces/standalone/silent_device.h"

namespace vantoric::standalone {
namespace {

constexpr int periodsInBuffer = 3;
constexpr int patience = 1000;  // milliseconds until a device that takes nothing counts as slow
constexpr int mostWaits = 3;    // of these, until it counts as gone

// The library prints what goes wrong; the program says it in words of its own.
void sayNothing(const char*, int, const char*, int, const char*, ...) {}

struct ClosePcm {
    void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
using Pcm = std::unique_ptr<snd_pcm_t, ClosePcm>;

// How a device takes its samples, the best first.
struct SampleForm {
    snd_pcm_format_t format;
    int bytes;
    void (*write)(float sample, std::uint8_t* to);
};

template <class Number>
void writeWhole(float sample, std::uint8_t* to, double fullScale) {
    const auto value = static_cast<Number>(std::lrint(std::clamp(static_cast<double>(sample), -1.0, 1.0) * fullScale));
    std::copy_n(reinterpret_cast<const std::uint8_t*>(&value), sizeof value, to);
}

constexpr std::size_t mostBytes = 4;  // of any of them
constexpr SampleForm sampleForms[] = {
    {SND_PCM_FORMAT_FLOAT, 4,
     [](float sample, std::uint8_t* to) {
         const float held = std::clamp(sample, -1.0f, 1.0f);
         std::copy_n(reinterpret_cast<const std::uint8_t*>(&held), sizeof held, to);
     }},
    {SND_PCM_FORMAT_S32, 4, [](float sample, std::uint8_t* to) { writeWhole<std::int32_t>(sample, to, 2147483647.0); }},
    {SND_PCM_FORMAT_S24_3LE, 3,
     [](float sample, std::uint8_t* to) {
         std::array<std::uint8_t, 4> whole{};
         writeWhole<std::int32_t>(sample, whole.data(), 8388607.0);
         std::copy_n(whole.data(), 3, to);
     }},
    {SND_PCM_FORMAT_S24, 4, [](float sample, std::uint8_t* to) { writeWhole<std::int32_t>(sample, to, 8388607.0); }},
    {SND_PCM_FORMAT_S16, 2, [](float sample, std::uint8_t* to) { writeWhole<std::int16_t>(sample, to, 32767.0); }},
};

// What a device was set to. Empty reason if all is well.
struct Setting {
    const SampleForm* form = nullptr;
    unsigned rate = 0;
    snd_pcm_uframes_t period = 0, buffer = 0;
};

std::string setHardware(snd_pcm_t* pcm, Setting& setting) {
    snd_pcm_hw_params_t* hardware = nullptr;
    snd_pcm_hw_params_alloca(&hardware);
    if (const int error = snd_pcm_hw_params_any(pcm, hardware); error < 0) return snd_strerror(error);
    if (const int error = snd_pcm_hw_params_set_access(pcm, hardware, SND_PCM_ACCESS_RW_INTERLEAVED); error < 0)
        return snd_strerror(error);
    for (const SampleForm& form : sampleForms)
        if (setting.form == nullptr && snd_pcm_hw_params_set_format(pcm, hardware, form.format) == 0) setting.form = &form;
    if (setting.form == nullptr) return "it takes no samples that the program can make";
    if (snd_pcm_hw_params_set_channels(pcm, hardware, 2) < 0) return "it is no stereo device";
    if (const int error = snd_pcm_hw_params_set_rate_near(pcm, hardware, &setting.rate, nullptr); error < 0)
        return snd_strerror(error);
    snd_pcm_hw_params_set_period_size_near(pcm, hardware, &setting.period, nullptr);
    setting.buffer = setting.period * periodsInBuffer;
    snd_pcm_hw_params_set_buffer_size_near(pcm, hardware, &setting.buffer);
    const int error = snd_pcm_hw_params(pcm, hardware);
    return error < 0 ? snd_strerror(error) : "";
}

// Starts when the buffer is full, and wakes the thread for each period.
std::string setSoftware(snd_pcm_t* pcm, const Setting& setting) {
    snd_pcm_sw_params_t* software = nullptr;
    snd_pcm_sw_params_alloca(&software);
    snd_pcm_sw_params_current(pcm, software);
    snd_pcm_sw_params_set_start_threshold(pcm, software, setting.buffer / setting.period * setting.period);
    snd_pcm_sw_params_set_avail_min(pcm, software, setting.period);
    const int error = snd_pcm_sw_params(pcm, software);
    return error < 0 ? snd_strerror(error) : "";
}

class AlsaDevice final : public SoundDevice {
public:
    AlsaDevice(Player& player, Pcm pcm, const Setting& setting)
        : player_(player),
          pcm_(std::move(pcm)),
          setting_(setting),
          left_(static_cast<std::size_t>(setting.period)),
          right_(left_.size()),
          bytes_(2 * left_.size() * mostBytes) {
        player_.prepare(setting.rate);
        std::promise<pid_t> started;
        auto number = started.get_future();
        thread_ = std::thread([this, &started] {
            started.set_value(static_cast<pid_t>(syscall(SYS_gettid)));
            run();
        });
        priority_ = askForRealtime(number.get());
    }
    ~AlsaDevice() override {
        isEnding_ = true;
        thread_.join();
    }
    std::string system() const override { return "ALSA"; }
    int period() const override { return static_cast<int>(setting_.period); }
    std::string priority() const override { return priorityText(priority_); }
    bool isLost() const override { return isLost_; }

private:
    void run() {
        const bool waits = snd_pcm_type(pcm_.get()) != SND_PCM_TYPE_NULL;
        BlockPacer pacer(static_cast<double>(setting_.period) / setting_.rate);
        while (!isEnding_ && !isLost_) {
            player_.play(left_.data(), right_.data(), period());
            std::uint8_t* to = bytes_.data();
            for (std::size_t i = 0; i < left_.size(); ++i, to += 2 * setting_.form->bytes) {
                setting_.form->write(left_[i], to);
                setting_.form->write(right_[i], to + setting_.form->bytes);
            }
            if (!writeBlock(bytes_.data())) isLost_ = true;
            if (!waits) pacer.waitForNext();
        }
    }

    // False if the device has gone.
    bool writeBlock(const std::uint8_t* bytes) {
        const auto frameBytes = static_cast<std::size_t>(2 * setting_.form->bytes);
        int waits = 0;
        for (snd_pcm_uframes_t done = 0; done < setting_.period && !isEnding_;) {
            const snd_pcm_sframes_t count = snd_pcm_writei(pcm_.get(), bytes + done * frameBytes, setting_.period - done);
            if (count >= 0) {
                done += static_cast<snd_pcm_uframes_t>(count);
            } else if (count == -EAGAIN) {
                const int ready = snd_pcm_wait(pcm_.get(), patience);
                if (ready == 0 && ++waits == mostWaits) return false;
                if (ready < 0 && !recover(ready)) return false;
            } else if (!recover(static_cast<int>(count))) {
                return false;
            }
        }
        return true;
    }

    bool recover(int error) {
        player_.noteDropout();
        return snd_pcm_recover(pcm_.get(), error, 1) >= 0;
    }

    Player& player_;
    Pcm pcm_;
    Setting setting_;
    std::vector<float> left_, right_;  // made before the thread, in which nobody could say that there is no memory
    std::vector<std::uint8_t> bytes_;
    Priority priority_ = Priority::ordinary;
    std::atomic<bool> isEnding_{false}, isLost_{false};
    std::thread thread_;
};

// Whether a name of the library's lists is one to offer: not every way to reach the same card.
bool isOffered(const std::string& name) {
    for (const char* known : {"default", "pipewire", "pulse"})
        if (name == known) return true;
    return false;
}

void addNamed(std::vector<AlsaName>& devices) {
    void** hints = nullptr;
    if (snd_device_name_hint(-1, "pcm", &hints) < 0) return;
    for (void** hint = hints; *hint != nullptr; ++hint) {
        const auto text = [hint](const char* what) {
            char* const found = snd_device_name_get_hint(*hint, what);
            std::string copy = found != nullptr ? found : "";
            std::free(found);
            return copy;
        };
        if (!isOffered(text("NAME")) || text("IOID") == "Input") continue;
        std::string description = text("DESC");
        devices.push_back({text("NAME"), description.substr(0, description.find('\n'))});
    }
    snd_device_name_free_hint(hints);
}

void addCard(std::vector<AlsaName>& devices, int card) {
    snd_ctl_t* control = nullptr;
    if (snd_ctl_open(&control, ("hw:" + std::to_string(card)).c_str(), 0) < 0) return;
    snd_ctl_card_info_t* about = nullptr;
    snd_ctl_card_info_alloca(&about);
    snd_pcm_info_t* output = nullptr;
    snd_pcm_info_alloca(&output);
    if (snd_ctl_card_info(control, about) == 0)
        for (int device = -1; snd_ctl_pcm_next_device(control, &device) == 0 && device >= 0;) {
            snd_pcm_info_set_device(output, static_cast<unsigned>(device));
            snd_pcm_info_set_subdevice(output, 0);
            snd_pcm_info_set_stream(output, SND_PCM_STREAM_PLAYBACK);
            if (snd_ctl_pcm_info(control, output) < 0) continue;
            devices.push_back({std::string("plughw:CARD=") + snd_ctl_card_info_get_id(about) + ",DEV=" + std::to_string(device),
                               std::string(snd_ctl_card_info_get_name(about)) + ", " + snd_pcm_info_get_name(output)});
        }
    snd_ctl_close(control);
}

}  // namespace

void quietenAlsa() { snd_lib_error_set_handler(&sayNothing); }

std::vector<AlsaName> alsaDevices() {
    quietenAlsa();
    std::vector<AlsaName> devices;
    addNamed(devices);
    for (int card = -1; snd_card_next(&card) == 0 && card >= 0;) addCard(devices, card);
    return devices;
}

std::unique_ptr<SoundDevice> openAlsa(Player& player, const std::string& name, int rate, int period, std::string& problem) {
    quietenAlsa();
    const auto refuse = [&](const std::string& why) {
        problem = "ALSA: device \"" + name + "\": " + why;
        return nullptr;
    };
    snd_pcm_t* opened = nullptr;
    if (const int error = snd_pcm_open(&opened, name.c_str(), SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK); error < 0)
        return refuse(snd_strerror(error));
    Pcm pcm(opened);
    Setting setting;
    setting.rate = static_cast<unsigned>(rate);
    setting.period = static_cast<snd_pcm_uframes_t>(period);
    if (const std::string why = setHardware(pcm.get(), setting); !why.empty()) return refuse(why);
    if (const std::string why = setSoftware(pcm.get(), setting); !why.empty()) return refuse(why);
    try {
        return std::make_unique<AlsaDevice>(player, std::move(pcm), setting);
    } catch (const std::system_error& error) {  // no more threads
        return refuse(error.what());
    } catch (const std::bad_alloc&) {
        return refuse(snd_strerror(-ENOMEM));
    }
}

}  // namespace vantoric::standalone

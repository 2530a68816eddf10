#include "loading/sfz_import.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "patch/exchange_contents.h"
#include "patch/patch_file.h"
#include "patch/patch_reset.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "sound/kernels.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr float defaultRelease = 0.3f;                     // 20 ms: no click at a note's end
constexpr int velocitySource = 18, volumeDestination = 2;  // rows of the matrix lists

bool isAbsolute(const std::string& path) { return path.starts_with('/') || (path.size() > 1 && path[1] == ':'); }

// Of a path, both separators allowed; without what follows the last dot.
std::string nameWithoutExtension(const std::string& path) {
    const std::string name = path.substr(folderOfPath(path).size());
    return name.substr(0, std::min(name.size(), name.find_last_of('.')));
}

}  // namespace

std::string sfzSamplePath(const std::string& sfzPath, const std::string& sample) {
    std::string path = sample;
    std::replace(path.begin(), path.end(), '\\', platform::pathSeparator);
    std::replace(path.begin(), path.end(), '/', platform::pathSeparator);
    return isAbsolute(sample) || isAbsolute(path) ? path : folderOfPath(sfzPath) + path;
}

SfzImport::SfzImport(EngineAccess& access, ParameterModel& parameters, ProgramSlot& program, const SampleHolders& holders,
                     SampleLoader& loader, PatchHost& host, Messages& messages)
    : access_(access),
      parameters_(parameters),
      program_(program),
      holders_(holders),
      loader_(loader),
      host_(host),
      messages_(messages) {}

bool SfzImport::refuse(const char* text) {
    messages_.post("Error", text);
    return false;
}

std::optional<SfzFile> SfzImport::readSfz(const std::string& path) try {
    std::vector<std::uint8_t> bytes;
    if (!platform::readFile(path, bytes, maxSfzBytes)) {
        refuse("File read error");
        return std::nullopt;
    }
    SfzFile file = parseSfz({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (file.lines > 0) return file;
    refuse("This sfz file is not compatible with Vantori. No valid lines found.");
    return std::nullopt;
} catch (...) {
    refuse(notEnoughMemory);
    return std::nullopt;
}

bool SfzImport::importSfz(const std::string& path, SfzGroups groups) {
    const std::optional<SfzFile> file = readSfz(path);
    return file && importSfz(path, *file, groups);
}

bool SfzImport::importSfz(const std::string& path, const SfzFile& file, SfzGroups groups) try {
    const std::optional<SfzPlan> plan = planImport(file, groups);
    if (!plan) return false;
    const EngineTurn turn(access_);
    return placeSfz(path, *plan, readSamples(path, *plan));
} catch (...) {
    return refuse(notEnoughMemory);
}

std::optional<SfzPlan> SfzImport::planImport(const SfzFile& file, SfzGroups groups) try {
    SfzPlan plan = planSfz(file, file.groups > 1 && groups == SfzGroups::onlyFirst);
    if (plan.oscillators.empty()) {
        refuse("No sample found. This sfz file is not compatible with Vantori.");
        return std::nullopt;
    }
    if (plan.keyInfoMissing)
        messages_.post("Warning",
                       "The key info of this sfz file is invalid! Please check lokey=, hikey= and "
                       "pitch_keycenter= .");
    return plan;
} catch (...) {
    refuse(notEnoughMemory);
    return std::nullopt;
}

std::vector<WaveReading> SfzImport::readSamples(const std::string& path, const SfzPlan& plan, Progress* progress) const {
    std::vector<WaveReading> samples;
    try {
        samples.reserve(plan.oscillators.size());
        const double part = 1.0 / static_cast<double>(plan.oscillators.size());
        for (const SfzOscillator& region : plan.oscillators) {
            const auto before = static_cast<double>(samples.size());
            if (progress != nullptr) progress->setStretch(before * part, (before + 1) * part);
            samples.push_back(loader_.readWave(sfzSamplePath(path, region.sample), 0, progress));
            if (progress != nullptr && progress->isCancelled()) break;
        }
    } catch (...) {
        messages_.post("Error", notEnoughMemory);
    }
    return samples;
}

bool SfzImport::placeSfz(const std::string& path, const SfzPlan& plan, std::vector<WaveReading>&& samples) try {
    const EngineTurn turn(access_);
    samples.resize(plan.oscillators.size());
    replacePatch(path, plan, std::move(samples));
    return true;
} catch (...) {
    return refuse(notEnoughMemory);
}

void SfzImport::replacePatch(const std::string& path, const SfzPlan& plan, std::vector<WaveReading>&& samples) {
    beginPatch(path, plan);
    for (std::size_t k = 0; k < plan.oscillators.size(); ++k)
        placeRegion(static_cast<int>(k) / oscillatorCount, static_cast<int>(k) % oscillatorCount, plan.oscillators[k],
                    std::move(samples[k]));
    access_.flags().rebuildRequested.set();
    host_.refreshAll();
}

// Silence, then an empty patch with the layers that are used.
void SfzImport::beginPatch(const std::string& path, const SfzPlan& plan) {
    {
        const EngineHold hold(access_, HoldFor::waves);
        host_.allNotesOff();
        for (Sample* sample : holders_) exchangeContents(access_, *sample, Sample());
        resetAllParameters(parameters_);
        for (int layer = 0; layer < layerCount; ++layer) setUpLayer(layer, plan);
        parameters_.setParameterQuiet(par::SoundMod, 0.0f);
        parameters_.setParameterQuiet(par::Microtun, 0.0f);
        host_.resetEngine();
    }
    program_.setProgramName(nameWithoutExtension(path));
    host_.lookUpPatchName();
}

void SfzImport::setUpLayer(int layer, const SfzPlan& plan) {
    const int used = static_cast<int>(plan.oscillators.size()) - layer * oscillatorCount;
    parameters_.setParameterQuiet(par::Layer1On + layer, used > 0 ? 1.0f : 0.0f);
    for (int filter = 0; filter < filterCount; ++filter) {
        set(par::FilType1 + filter, layer, 0.0f);
        set(par::Cutoff1 + filter, layer, 1.0f);
        set(par::Reso1 + filter, layer, 0.0f);
    }
    for (int oscillator = 0; oscillator < oscillatorCount; ++oscillator)
        set(par::On1 + oscillator, layer, oscillator < used ? 1.0f : 0.0f);
    set(par::AttVol, layer, plan.attack.value_or(0.0f));
    set(par::HoldVol, layer, plan.hold.value_or(0.0f));
    set(par::DecVol, layer, plan.decay.value_or(0.0f));
    set(par::SusVol, layer, plan.sustain.value_or(1.0f));
    set(par::RelVol, layer, plan.release.value_or(defaultRelease));
    if (plan.playMode) set(par::PlayMode, layer, listValue(*plan.playMode));
    if (plan.velocityDepth) setVelocityDepth(layer, *plan.velocityDepth);
}

// The part of the layer's volume that follows the velocity.
void SfzImport::setVelocityDepth(int layer, float depth) {
    const float volume = parameters_.getParameter(hostIndex(par::LayerVol, layer));
    set(par::LayerVol, layer, volume * (1.0f - depth));
    set(par::MatSrc1, layer, listValue(velocitySource));
    set(par::MatDst1, layer, listValue(volumeDestination));
    set(par::MatVal1, layer, 0.5f + 0.5f * volume * depth);
}

void SfzImport::placeRegion(int layer, int oscillator, const SfzOscillator& region, WaveReading&& reading) {
    set(par::SynType1 + oscillator, layer, listValue(sampleType));
    if (reading.wave) {
        loader_.place(layer, oscillator, std::move(*reading.wave));
    } else {
        messages_.post(reading.refused);
        messages_.post("Error", "File not found: " + region.sample);
    }
    set(par::Oct1 + oscillator, layer, region.oct);
    set(par::Semi1 + oscillator, layer, region.semi);
    set(par::Detune1 + oscillator, layer, region.detune);
    set(par::KeyStar1 + oscillator, layer, listValue(region.keys.low));
    set(par::KeyEnd1 + oscillator, layer, listValue(region.keys.high));
    set(par::Vol1 + oscillator, layer, region.vol);
    const std::int32_t length = holderOf(holders_, layer, oscillator)->length;
    if (length <= 0) return;
    set(par::Start1 + oscillator, layer, static_cast<float>(static_cast<double>(region.offset) / length));
    if (region.loop != SfzLoop::fromFile) setLoop(layer, oscillator, region);
}

void SfzImport::setLoop(int layer, int oscillator, const SfzOscillator& region) {
    Sample& sample = *holderOf(holders_, layer, oscillator);
    const bool isOn = region.loop == SfzLoop::on;
    set(par::LoopMod1 + oscillator, layer, listValue(isOn ? loopModeLoop : loopModeSingle));
    std::int32_t start = isOn ? sample.loopStart : 0, end = isOn ? sample.loopEnd : sample.length;
    if (isOn) {
        takePoint(region.loopStart, sample.length, "The loop_start is outside of the sample borders!", start);
        takePoint(region.loopEnd, sample.length, "The loop_end is outside of the sample borders!", end);
    }
    const EngineHold hold(access_, HoldFor::waves);
    sample.loopStart = start;
    sample.loopEnd = end;
}

// One that was given, if it lies within the sample.
void SfzImport::takePoint(std::int32_t point, std::int32_t length, const char* complaint, std::int32_t& taken) {
    if (point > length)
        messages_.post("Error", complaint);
    else if (point >= 0)
        taken = point;
}

}  // namespace vantoric

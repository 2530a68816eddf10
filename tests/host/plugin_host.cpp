#include "tests/host/plugin_host.h"

#include <dlfcn.h>
#include <elf.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace testhost {

namespace {

constexpr unsigned char fenceByte = 0xA5;

std::size_t pageSize() {
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// The instance being made: until its record exists, calls to the host carry no sign of whom they are for.
std::atomic<PluginHost*> beingMade{nullptr};

// Copies at most 64 characters and a zero, what the interface grants.
wire::word giveText(void* ptr, const std::string& text) {
    if (!ptr) return 0;
    const std::string part = text.substr(0, 64);
    std::memcpy(ptr, part.c_str(), part.size() + 1);
    return 1;
}

}  // namespace

template <class Sample>
GuardedBuffer<Sample>::GuardedBuffer(std::size_t count) : count_(count) {
    const std::size_t page = pageSize();
    bytes_ = (count * sizeof(Sample) + page) / page * page;  // at least one byte of fence
    void* const memory = mmap(nullptr, bytes_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    pages_ = static_cast<unsigned char*>(memory);
    mprotect(pages_ + bytes_, page, PROT_NONE);
    data_ = reinterpret_cast<Sample*>(pages_ + bytes_) - count;
    std::memset(pages_, fenceByte, bytes_ - count * sizeof(Sample));
    std::fill_n(data_, count, std::numeric_limits<Sample>::quiet_NaN());
}

template <class Sample>
GuardedBuffer<Sample>::~GuardedBuffer() {
    munmap(pages_, bytes_ + pageSize());
}

template <class Sample>
bool GuardedBuffer<Sample>::fenceIntact() const {
    return std::all_of(pages_, reinterpret_cast<unsigned char*>(data_), [](unsigned char b) { return b == fenceByte; });
}

template class GuardedBuffer<float>;
template class GuardedBuffer<double>;

template <class Sample>
bool Stereo<Sample>::finite() const {
    const auto good = [](Sample x) { return std::isfinite(x); };
    return std::all_of(left.begin(), left.end(), good) && std::all_of(right.begin(), right.end(), good);
}

template <class Sample>
Sample Stereo<Sample>::peak() const {
    Sample peak = 0;
    for (const auto* side : {&left, &right})
        for (Sample x : *side) peak = std::max(peak, std::fabs(x));
    return peak;
}

template <class Sample>
void Stereo<Sample>::append(const Stereo& more) {
    left.insert(left.end(), more.left.begin(), more.left.end());
    right.insert(right.end(), more.right.begin(), more.right.end());
    intact = intact && more.intact;
}

template <class Sample>
bool Stereo<Sample>::operator==(const Stereo& other) const {
    const auto same = [](const std::vector<Sample>& a, const std::vector<Sample>& b) {
        return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Sample)) == 0);
    };
    return same(left, other.left) && same(right, other.right);
}

template struct Stereo<float>;
template struct Stereo<double>;

Module::Module(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
}

Module::~Module() { dlclose(handle_); }

wire::EntryFunction Module::entry(const char* name) const { return reinterpret_cast<wire::EntryFunction>(dlsym(handle_, name)); }

std::vector<std::string> exportedSymbols(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    if (bytes.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes.data(), ELFMAG, SELFMAG) != 0)
        throw std::runtime_error("no ELF file: " + path);
    const auto read = [&bytes](auto& record, std::size_t offset) { std::memcpy(&record, bytes.data() + offset, sizeof record); };
    Elf64_Ehdr header;
    read(header, 0);
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    for (std::size_t i = 0; i < sections.size(); ++i) read(sections[i], header.e_shoff + i * header.e_shentsize);
    std::vector<std::string> names;
    for (const Elf64_Shdr& section : sections) {
        if (section.sh_type != SHT_DYNSYM) continue;
        const std::size_t texts = sections.at(section.sh_link).sh_offset;
        for (std::size_t at = 0; at + sizeof(Elf64_Sym) <= section.sh_size; at += sizeof(Elf64_Sym)) {
            Elf64_Sym symbol;
            read(symbol, section.sh_offset + at);
            if (symbol.st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL)
                names.emplace_back(bytes.data() + texts + symbol.st_name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

PluginHost::PluginHost(const std::string& path, HostAnswers answers, const char* entry)
    : answers_(std::move(answers)), module_(path) {
    const wire::EntryFunction make = module_.entry(entry);
    if (!make) throw std::runtime_error(std::string("no entry point ") + entry);
    beingMade = this;
    effect_ = make(hostFunction);
    if (effect_) effect_->hostData = this;
    beingMade = nullptr;
    if (!effect_) throw std::runtime_error("the plug-in made no instance");
}

PluginHost::~PluginHost() { close(); }

wire::word PluginHost::call(wire::i32 op, wire::i32 index, wire::word value, void* ptr, float opt) {
    return effect_->dispatch(effect_, op, index, value, ptr, opt);
}

void PluginHost::start() {
    open();
    setRate(answers_.rate);
    setBlockSize(answers_.blockSize);
    on();
}

void PluginHost::close() {
    if (!effect_) return;
    call(wire::opClose);
    effect_ = nullptr;
}

void PluginHost::setRate(float rate) {
    answers_.rate = rate;
    call(wire::opRate, 0, 0, nullptr, rate);
}

void PluginHost::setBlockSize(int frames) {
    answers_.blockSize = frames;
    call(wire::opBlockSize, 0, frames);
}

void PluginHost::midi(int status, int data1, int data2, int offset) {
    wire::Midi event;
    event.offset = offset;
    event.data[0] = static_cast<unsigned char>(status);
    event.data[1] = static_cast<unsigned char>(data1);
    event.data[2] = static_cast<unsigned char>(data2);
    queue_.push_back(event);
}

wire::word PluginHost::sendEvents(const std::vector<void*>& events, int count) {
    static_assert(wire::eventListHead == 2 * sizeof(void*));
    lists_.push_back(std::make_unique<std::vector<void*>>(2, nullptr));
    std::vector<void*>& list = *lists_.back();
    const std::int64_t head = static_cast<std::uint32_t>(count);
    std::memcpy(list.data(), &head, sizeof head);
    list.insert(list.end(), events.begin(), events.end());
    return call(wire::opEvents, 0, 0, list.data());
}

void PluginHost::flushMidi() {
    if (queue_.empty()) return;
    sent_.push_back(std::make_unique<std::vector<wire::Midi>>(std::move(queue_)));
    queue_.clear();
    std::vector<void*> events;
    for (wire::Midi& event : *sent_.back()) events.push_back(&event);
    sendEvents(events);
}

template <class Sample>
Stereo<Sample> PluginHost::renderBlock(int frames, void (*process)(wire::Effect*, Sample**, Sample**, wire::i32)) {
    flushMidi();
    const GuardedBuffer<Sample> left(static_cast<std::size_t>(frames)), right(static_cast<std::size_t>(frames));
    Sample* outputs[2] = {left.data(), right.data()};
    Sample* inputs[1] = {nullptr};
    process(effect_, inputs, outputs, frames);
    sent_.clear();
    lists_.clear();
    position_ += frames;
    Stereo<Sample> sound;
    sound.left.assign(left.data(), left.data() + frames);
    sound.right.assign(right.data(), right.data() + frames);
    sound.intact = left.fenceIntact() && right.fenceIntact();
    return sound;
}

template Sound PluginHost::renderBlock(int, void (*)(wire::Effect*, float**, float**, wire::i32));
template DoubleSound PluginHost::renderBlock(int, void (*)(wire::Effect*, double**, double**, wire::i32));

Sound PluginHost::renderLong(int frames, int blockSize) {
    Sound sound;
    for (int done = 0; done < frames; done += blockSize) sound.append(render(std::min(blockSize, frames - done)));
    return sound;
}

std::string PluginHost::text(wire::i32 op, int index) {
    std::array<char, 1024> buffer{};
    call(op, index, -1, buffer.data());
    buffer.back() = 0;
    return buffer.data();
}

std::vector<unsigned char> PluginHost::chunk(bool isPreset) {
    void* data = nullptr;
    const wire::word size = call(wire::opGetChunk, isPreset, 0, &data);
    if (size <= 0 || !data) return {};
    const auto* bytes = static_cast<unsigned char*>(data);
    return {bytes, bytes + size};
}

wire::word PluginHost::setChunk(const std::vector<unsigned char>& data, bool isPreset) {
    std::vector<unsigned char> copy = data;  // exactly as long, so that a read beyond it is seen by a sanitizer
    copy.shrink_to_fit();
    return call(wire::opSetChunk, isPreset, static_cast<wire::word>(copy.size()), copy.data());
}

std::vector<Automation> PluginHost::automations() const {
    const int count = std::min<int>(automationCount_, static_cast<int>(automations_.size()));
    return {automations_.begin(), automations_.begin() + count};
}

// Runs on any thread of the plug-in and must itself neither allocate nor lock.
wire::word PluginHost::hostFunction(wire::Effect* effect, wire::i32 op, wire::i32 index, wire::word value, void* ptr, float opt) {
    PluginHost* host = effect ? static_cast<PluginHost*>(effect->hostData) : nullptr;
    if (!host) host = beingMade;
    return host ? host->answer(op, index, value, ptr, opt) : 0;
}

wire::word PluginHost::answer(wire::i32 op, wire::i32 index, wire::word value, void* ptr, float opt) {
    if (op >= 0 && op < 64) ++asked_[static_cast<std::size_t>(op)];
    if (op == wire::hostWantsMidi) ++eventsWanted_;
    if (op == wire::hostTime) ++timeAsked_;
    if (op == wire::hostAutomated) {
        const int at = automationCount_++;
        if (at >= 0 && at < static_cast<int>(automations_.size())) automations_[static_cast<std::size_t>(at)] = {index, opt};
    }
    if (answers_.heard) answers_.heard(op);
    if (answers_.silent) return 0;
    switch (op) {
        case wire::hostAutomated:
        case wire::hostWantsMidi:
        case wire::hostRedraw:
        case wire::hostEditBegins:
        case wire::hostEditEnds: return 1;
        case wire::hostInterface: return answers_.interfaceVersion;
        case wire::hostIdentity: return effect_ ? effect_->identifier : 0;
        case wire::hostTime: return giveTime();
        case wire::hostSize: sizeWanted_ = {index, static_cast<int>(value)}; return answers_.resizes ? 1 : 0;
        case wire::hostRate: return static_cast<wire::word>(answers_.rate);
        case wire::hostBlockSize: return answers_.blockSize;
        case wire::hostProcessLevel: return 0;
        case wire::hostVendor: return giveText(ptr, answers_.vendor);
        case wire::hostProduct: return giveText(ptr, answers_.product);
        case wire::hostVendorVersion: return answers_.vendorVersion;
        case wire::hostCanDo: return answers_.canDo;
        default: return 0;
    }
}

wire::word PluginHost::giveTime() {
    if (!answers_.knowsTime) return 0;
    time_ = answers_.time;
    if (answers_.timeAdvances) {
        time_.samples += position_;
        time_.quarters += position_ / answers_.rate * time_.tempo / 60.0;
    }
    return reinterpret_cast<wire::word>(&time_);
}

}  // namespace testhost

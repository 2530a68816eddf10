// What the tests of all formats share: one test for each format, and the VST 2.4 plug-in to compare with.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "base/parameters.h"
#include "tests/formats/format_host.h"

namespace testhost {

namespace par = vantoric::parameter;

inline constexpr double rate = 48000;
inline constexpr int block = 512;

// Some notes of block `number`, in the order of their frames.
inline std::vector<Event> phrase(int number) {
    switch (number) {
        case 0: return {Event::note(0, 60), Event::note(37, 64), Event::note(511, 67)};
        case 9: return {Event::note(100, 60, false), Event::controller(101, 1, 80), Event::note(300, 72)};
        case 20: return {Event::note(5, 64, false), Event::note(6, 67, false), Event::note(7, 72, false)};
        default: return {};
    }
}

inline void send(PluginHost& host, const std::vector<Event>& events) {
    for (const Event& event : events) host.midi(event.status, event.data1, event.data2, event.frame);
}

struct Formats : testing::TestWithParam<Format> {
    std::unique_ptr<FormatHost> make(bool isOn = true) {
        auto host = GetParam().make();
        if (isOn) host->start(rate, block);
        return host;
    }
    Sound play(FormatHost& host, int blocks, int frames = block) {
        Sound sound;
        for (int i = 0; i < blocks; ++i) sound.append(host.render(frames, phrase(i)));
        return sound;
    }
};

struct Reference {
    explicit Reference(double hostRate = rate) : host(VST2_MODULE, answers()) {
        host.open();
        host.setRate(static_cast<float>(hostRate));
        host.setBlockSize(block);
        host.on();
    }
    static HostAnswers answers() {
        HostAnswers told;
        told.knowsTime = false;
        return told;
    }
    Sound play(int blocks, int frames = block) {
        Sound sound;
        for (int i = 0; i < blocks; ++i) {
            send(host, phrase(i));
            sound.append(host.render(frames));
        }
        return sound;
    }
    PluginHost host;
};

}  // namespace testhost

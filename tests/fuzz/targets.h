// The readers of foreign bytes, each as a function of any bytes. A target aborts if a promise of its reader
// is broken; memory errors are the sanitizers' to find.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vantoric::fuzz {

using Bytes = std::vector<std::uint8_t>;

// A promise of a reader.
inline void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

// Inputs below 1000 bytes are scripts of changes to a sound chunk or file, so that few bytes reach deep;
// longer ones are the bytes themselves.
void chunk(const std::uint8_t* data, std::size_t size);
void patchFile(const std::uint8_t* data, std::size_t size);
void controllerMap(const std::uint8_t* data, std::size_t size);
void sizeFile(const std::uint8_t* data, std::size_t size);
void bankFile(const std::uint8_t* data, std::size_t size);
void waveFile(const std::uint8_t* data, std::size_t size);
void sfzFile(const std::uint8_t* data, std::size_t size);
void resynthesis(const std::uint8_t* data, std::size_t size);
// States as hosts hand them to the plug-ins of each format. The first eight bytes say how the host's stream gives them.
void clapState(const std::uint8_t* data, std::size_t size);
void lv2State(const std::uint8_t* data, std::size_t size);
void vst3State(const std::uint8_t* data, std::size_t size);

// The bytes of a chunk by a script, or as they are; see above.
Bytes chunkOf(const std::uint8_t* data, std::size_t size);

// Inputs to begin with, sound ones and nearly sound ones.
std::vector<Bytes> chunkSeeds();
std::vector<Bytes> patchFileSeeds();
std::vector<Bytes> controllerMapSeeds();
std::vector<Bytes> sizeFileSeeds();
std::vector<Bytes> bankFileSeeds();
std::vector<Bytes> waveFileSeeds();
std::vector<Bytes> sfzFileSeeds();
std::vector<Bytes> resynthesisSeeds();
std::vector<Bytes> stateSeeds();

}  // namespace vantoric::fuzz

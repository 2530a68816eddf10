// Sleeping and thread priority.
#pragma once

namespace vantoric::platform {

// Suspends the calling thread; 0 or less returns at once. Never on the audio thread.
void sleepMilliseconds(int milliseconds);

// Gives the calling thread a low ordinary priority, also if it was started by a realtime thread: it gives way to others, but gets
// its turn on a busy machine. A refusal of the system is ignored.
void setLowPriority();

}  // namespace vantoric::platform

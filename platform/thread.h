// Sleeping and thread priority.
#pragma once

namespace vantoric::platform {

// Suspends the calling thread; 0 or less returns at once. Never on the audio thread.
void sleepMilliseconds(int milliseconds);

// Gives the calling thread the lowest ordinary priority, also if it was started by a realtime thread.
// A refusal of the system is ignored.
void setLowestPriority();

}  // namespace vantoric::platform

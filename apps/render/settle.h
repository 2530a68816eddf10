// Waiting for a plug-in's own threads.
#pragma once

#include <functional>

namespace vantoric::render {

// A plug-in may load its data on a thread of its own and stay silent meanwhile, and it has no way to tell a host
// that it is done. A render starts when the other threads of this process have slept for a quarter of a second,
// or after `limit` seconds. A thread that wakes now and then to look for work counts as asleep.
// Returns false if the limit was reached. Where threads cannot be watched it sleeps for one second. `waiting` is
// called again and again meanwhile, if given.
bool waitUntilSettled(double limit, const std::function<void()>& waiting = {});

}  // namespace vantoric::render

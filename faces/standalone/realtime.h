// Real-time priority for the thread that plays.
#pragma once

#include <sys/types.h>

#include <string>

namespace vantoric::standalone {

enum class Priority { ordinary, granted, byService };

// Asks for a thread of this process, by the system's number of it: the system itself where the user's limits allow it, as they
// grant more than the service does; else the desktop's service (RealtimeKit, on the system's message bus). Waits for the
// service for a second at most.
Priority askForRealtime(pid_t thread);

// The service alone. False if there is none, or it refuses.
bool askRealtimeService(pid_t thread);

// For the user: "real-time priority".
std::string priorityText(Priority priority);

}  // namespace vantoric::standalone

#include "faces/standalone/realtime.h"

#include <dbus/dbus.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>

namespace vantoric::standalone {
namespace {

constexpr char service[] = "org.freedesktop.RealtimeKit1", object[] = "/org/freedesktop/RealtimeKit1";
constexpr int patience = 1000;  // milliseconds
constexpr int wantedPriority = 20, ownPriority = 70;

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
    void operator()(DBusConnection* connection) const {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using Message = std::unique_ptr<DBusMessage, Unref>;
using Connection = std::unique_ptr<DBusConnection, Unref>;

// Null where the service answers with an error, or not at all.
Message ask(DBusConnection* bus, const Message& question) {
    DBusError error = DBUS_ERROR_INIT;
    Message answer(dbus_connection_send_with_reply_and_block(bus, question.get(), patience, &error));
    dbus_error_free(&error);
    return answer;
}

// A number among the service's properties, of 32 or 64 bits; `otherwise` without an answer.
std::int64_t property(DBusConnection* bus, const char* name, std::int64_t otherwise) {
    Message question(dbus_message_new_method_call(service, object, "org.freedesktop.DBus.Properties", "Get"));
    const char* interface = service;
    if (!question ||
        !dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID))
        return otherwise;
    const Message answer = ask(bus, question);
    DBusMessageIter at, value;
    if (!answer || !dbus_message_iter_init(answer.get(), &at) || dbus_message_iter_get_arg_type(&at) != DBUS_TYPE_VARIANT)
        return otherwise;
    dbus_message_iter_recurse(&at, &value);
    DBusBasicValue number{};
    dbus_message_iter_get_basic(&value, &number);
    switch (dbus_message_iter_get_arg_type(&value)) {
        case DBUS_TYPE_INT32: return number.i32;
        case DBUS_TYPE_INT64: return number.i64;
        default: return otherwise;
    }
}

std::atomic<pid_t> favoured{0};  // the thread that the service made a real-time one

// The system's warning that it has run too long without a rest: it goes on as an ordinary one, before the process is ended.
extern "C" void makeOrdinary(int) {
    const sched_param none{};
    if (const pid_t thread = favoured.load(); thread > 0) sched_setscheduler(thread, SCHED_OTHER, &none);
}

// The service takes only processes that the system stops when a real-time thread runs away.
bool limitRunaways(pid_t thread, std::int64_t microseconds) {
    rlimit limit{};
    if (getrlimit(RLIMIT_RTTIME, &limit) != 0) return false;
    favoured.store(thread);
    struct sigaction action{};
    action.sa_handler = makeOrdinary;
    action.sa_flags = SA_RESTART;
    if (sigaction(SIGXCPU, &action, nullptr) != 0) return false;
    limit.rlim_max = std::min(limit.rlim_max, static_cast<rlim_t>(std::max<std::int64_t>(microseconds, 2)));
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max / 2);
    return setrlimit(RLIMIT_RTTIME, &limit) == 0;
}

}  // namespace

bool askRealtimeService(pid_t thread) {
    DBusError error = DBUS_ERROR_INIT;
    const Connection bus(dbus_bus_get_private(DBUS_BUS_SYSTEM, &error));
    dbus_error_free(&error);
    if (!bus) return false;
    dbus_connection_set_exit_on_disconnect(bus.get(), FALSE);
    const std::int64_t most = property(bus.get(), "MaxRealtimePriority", 0);
    if (most <= 0 || !limitRunaways(thread, property(bus.get(), "RTTimeUSecMax", 200000))) return false;
    const Message question(dbus_message_new_method_call(service, object, service, "MakeThreadRealtime"));
    const dbus_uint64_t number = static_cast<dbus_uint64_t>(thread);
    const dbus_uint32_t priority = static_cast<dbus_uint32_t>(std::min<std::int64_t>(most, wantedPriority));
    return question &&
           dbus_message_append_args(question.get(), DBUS_TYPE_UINT64, &number, DBUS_TYPE_UINT32, &priority, DBUS_TYPE_INVALID) &&
           ask(bus.get(), question) != nullptr;
}

Priority askForRealtime(pid_t thread) {
    sched_param wanted{};
    wanted.sched_priority = ownPriority;
    if (sched_setscheduler(thread, SCHED_FIFO | SCHED_RESET_ON_FORK, &wanted) == 0) return Priority::granted;
    return askRealtimeService(thread) ? Priority::byService : Priority::ordinary;
}

std::string priorityText(Priority priority) {
    switch (priority) {
        case Priority::granted: return "real-time priority";
        case Priority::byService: return "real-time priority by the desktop's service";
        default: return "no real-time priority";
    }
}

}  // namespace vantoric::standalone

// Asking the desktop's service for real-time priority, on a message bus of the test's own.
#include <gtest/gtest.h>

#include <dbus/dbus.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <memory>
#include <thread>

#include "faces/standalone/realtime.h"
#include "tests/faces/standalone/program.h"

namespace {

using testhost::Program;
using namespace vantoric::standalone;

// A bus that everybody may use.
class Bus {
public:
    Bus() {
        const std::string address = "unix:path=" + (folder_ / "bus");
        std::ofstream(folder_ / "bus.conf")
            << "<busconfig><listen>" << address
            << "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
               "<allow receive_sender=\"*\"/><allow own=\"*\"/><allow user=\"*\"/></policy></busconfig>";
        daemon_ = std::make_unique<Program>(
            std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address", "--config-file=" + (folder_ / "bus.conf")});
        isThere_ = daemon_->waitFor("unix:", 10);
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    }
    ~Bus() { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }
    bool isThere() const { return isThere_; }

private:
    vantoric::platform::ScratchFolder folder_;
    std::unique_ptr<Program> daemon_;
    bool isThere_ = false;
};

// A service that notes what it is asked for, and grants or refuses it.
class Service {
public:
    explicit Service(bool grants) : grants_(grants) {
        connection_ = dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr);
        if (connection_ == nullptr) return;
        dbus_connection_set_exit_on_disconnect(connection_, FALSE);
        dbus_bus_request_name(connection_, "org.freedesktop.RealtimeKit1", 0, nullptr);
        thread_ = std::thread([this] {
            while (!isEnding_) {
                dbus_connection_read_write(connection_, 20);
                while (DBusMessage* const message = dbus_connection_pop_message(connection_)) {
                    answer(message);
                    dbus_message_unref(message);
                }
            }
        });
    }
    ~Service() {
        isEnding_ = true;
        if (thread_.joinable()) thread_.join();
        if (connection_ == nullptr) return;
        dbus_connection_close(connection_);
        dbus_connection_unref(connection_);
    }
    std::uint64_t askedThread = 0;
    std::uint32_t askedPriority = 0;

private:
    void answer(DBusMessage* question) {
        DBusMessage* reply = nullptr;
        if (dbus_message_is_method_call(question, "org.freedesktop.DBus.Properties", "Get")) {
            const char *interface = nullptr, *name = nullptr;
            dbus_message_get_args(question, nullptr, DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
            reply = dbus_message_new_method_return(question);
            const bool isLimit = std::string(name) == "RTTimeUSecMax";
            const dbus_int64_t limit = 200000;
            const dbus_int32_t most = 15;
            DBusMessageIter at, value;
            dbus_message_iter_init_append(reply, &at);
            dbus_message_iter_open_container(&at, DBUS_TYPE_VARIANT, isLimit ? "x" : "i", &value);
            if (isLimit) dbus_message_iter_append_basic(&value, DBUS_TYPE_INT64, &limit);
            if (!isLimit) dbus_message_iter_append_basic(&value, DBUS_TYPE_INT32, &most);
            dbus_message_iter_close_container(&at, &value);
        } else if (dbus_message_is_method_call(question, "org.freedesktop.RealtimeKit1", "MakeThreadRealtime")) {
            dbus_uint64_t thread = 0;
            dbus_uint32_t priority = 0;
            dbus_message_get_args(question, nullptr, DBUS_TYPE_UINT64, &thread, DBUS_TYPE_UINT32, &priority, DBUS_TYPE_INVALID);
            askedThread = thread;
            askedPriority = priority;
            reply = grants_ ? dbus_message_new_method_return(question)
                            : dbus_message_new_error(question, DBUS_ERROR_ACCESS_DENIED, "not you");
        }
        if (reply == nullptr) return;
        dbus_connection_send(connection_, reply, nullptr);
        dbus_connection_flush(connection_);
        dbus_message_unref(reply);
    }

    bool grants_;
    DBusConnection* connection_ = nullptr;
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

// In a process of its own, as a limit that the service wants can't be taken back. Its number, and whether it was granted.
// The warning of a runaway that follows must not end it.
std::pair<pid_t, bool> askInAProcess() {
    const pid_t process = fork();
    if (process == 0) {
        const bool isGranted = askRealtimeService(static_cast<pid_t>(syscall(SYS_gettid)));
        if (isGranted) raise(SIGXCPU);
        _exit(isGranted ? 0 : 1);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {process, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

class RealtimeTest : public testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v dbus-daemon >/dev/null 2>&1") != 0) GTEST_SKIP() << "no dbus-daemon here";
        bus_ = std::make_unique<Bus>();
        ASSERT_TRUE(bus_->isThere());
    }
    std::unique_ptr<Bus> bus_;
};

TEST_F(RealtimeTest, TheServiceIsAskedForTheThreadAtNoMoreThanItGrants) {
    Service service(true);
    const auto [process, isGranted] = askInAProcess();
    EXPECT_TRUE(isGranted);
    EXPECT_EQ(service.askedThread, static_cast<std::uint64_t>(process));
    EXPECT_EQ(service.askedPriority, 15u);
}

TEST_F(RealtimeTest, ARefusalIsNoTrouble) {
    Service service(false);
    EXPECT_FALSE(askInAProcess().second);
}

TEST_F(RealtimeTest, NorIsABusWithoutTheService) { EXPECT_FALSE(askInAProcess().second); }

TEST(RealtimeWithoutABus, IsNotGranted) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_FALSE(askInAProcess().second);
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

}  // namespace

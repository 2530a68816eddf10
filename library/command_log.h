// Which command is changing the patch, for those who keep a history.
#pragma once

#include <string>

#include "engine/instrument.h"

namespace vantoric {

// Follows the commands; called on their thread.
class CommandListener {
public:
    // A command is about to change the patch in force, which is still as it was. `name`: what it does, for the user.
    virtual void commandBegins(const std::string& name) = 0;
    // It is done, and the patch is another, or it failed and the patch is the same.
    virtual void commandEnded() = 0;
    // The patch that the running command makes was loaded from a file; the patch in force was saved to one.
    virtual void patchLoaded() = 0;
    virtual void patchSaved() = 0;

protected:
    ~CommandListener() = default;
};

// On the thread of the window. Commands that call others are told of once.
class CommandLog {
public:
    CommandLog() = default;
    // The host of this instrument hears of the patches that commands make.
    explicit CommandLog(Instrument& instrument) : instrument_(&instrument) {}
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    // Null for none. While no command runs.
    void setListener(CommandListener* listener) { listener_ = listener; }

    void notePatchLoaded() {
        if (listener_ != nullptr) listener_->patchLoaded();
    }
    void notePatchSaved() {
        if (listener_ != nullptr) listener_->patchSaved();
    }

    // A command that is changing the patch. Stands only while it acts, not while a user is asked.
    class Running {
    public:
        Running(CommandLog& log, const std::string& name) : log_(log) {
            if (log_.depth_++ == 0 && log_.listener_ != nullptr) log_.listener_->commandBegins(name);
        }
        ~Running() {
            if (--log_.depth_ > 0) return;
            if (log_.listener_ != nullptr) log_.listener_->commandEnded();
            HostPort* const host = log_.instrument_ != nullptr ? log_.instrument_->hostPort() : nullptr;
            if (host != nullptr) host->patchChanged();
        }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        CommandLog& log_;
    };

private:
    Instrument* instrument_ = nullptr;
    CommandListener* listener_ = nullptr;
    int depth_ = 0;
};

}  // namespace vantoric

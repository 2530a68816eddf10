// vantoric: the instrument as a program of its own.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "faces/standalone/options.h"
#include "faces/standalone/standalone.h"
#include "faces/standalone/system.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/thread.h"
#ifdef VANTORIC_WINDOW
#include "faces/standalone/main_window.h"
#endif

namespace {

using namespace vantoric;
using namespace vantoric::standalone;

volatile std::sig_atomic_t endWanted = 0;

void wantEnd() { endWanted = 1; }

int complain(Exit code, const std::string& what) {
    std::fprintf(stderr, "vantoric: %s\n", what.c_str());
    return static_cast<int>(code);
}

void say(const std::string& news) {
    if (news.empty()) return;
    std::printf("%s\n", news.c_str());
    std::fflush(stdout);
}

// The data lie beside the program, or in the plug-in's folder beside its own.
void chooseDataFolder() {
    const std::string here = platform::moduleFolder();
    const std::string above = platform::folderOfModulePath(here.substr(0, here.size() - 1));
    for (const std::string& place : {here, above + "Vantoric", above + "lib/vantoric", above + "share/vantoric"})
        if (platform::isFolder(platform::withSeparator(place) + "Vantoric_data")) return platform::setDataFolder(place);
}

void printDevice(const std::string& name, const std::string& description) {
    std::printf(description.empty() ? "  %s\n" : "  %-28s %s\n", name.c_str(), description.c_str());
}

int listDevices(Standalone& program) {
    for (const DeviceGroup& group : soundDevices(program.player())) {
        std::printf("%s\n", group.heading.c_str());
        for (const auto& device : group.devices) printDevice(device.name, device.description);
    }
    program.midi().poll(nullptr);
    std::printf("MIDI (%s)\n", program.midi().description().c_str());
    for (const MidiInput& input : program.midi().inputs()) printDevice(input.id, input.name);
    return 0;
}

bool hasDisplay() {
#ifdef VANTORIC_WINDOW
    return MainWindow::hasDisplay();
#else
    return false;
#endif
}

// Opens the device without an instrument that makes sound.
int probe(Standalone& program, const SoundChoice& choice) {
    if (!hasDisplay()) return complain(Exit::noDisplay, "there is no display");
    if (!program.sound().open(choice)) return complain(Exit::noSound, "no sound: " + program.sound().problem());
    return 0;
}

void report(Standalone& program) {
    std::printf("played %.1f s, %llu MIDI messages, %d dropouts\n",
                static_cast<double>(program.player().frames()) / program.player().rate(),
                static_cast<unsigned long long>(program.player().messages()), program.player().dropouts());
}

bool isOver(Standalone& program, const Options& options) {
    return endWanted != 0 ||
           (options.seconds > 0 && static_cast<double>(program.player().frames()) >= options.seconds * program.player().rate());
}

void runWithoutWindow(Standalone& program, const Options& options) {
    while (!isOver(program, options)) {
        program.poll();
        say(program.takeNews());
        platform::sleepMilliseconds(20);
    }
}

// What options set for this start alone is not kept. False, and told, if it could not be.
bool keep(Standalone& program, KeptSettings& settings, const KeptStart& start) {
    settings.tempo = program.player().tempo();
    settings.octave = program.hands().octave();
    settings.unwantedInputs = program.midi().unwanted();
    const bool areSettingsKept = keepSettings(settings, start), isPatchKept = keepPatch(program.plugged(), start);
    if (!areSettingsKept || !isPatchKept) complain(Exit::trouble, "what was set could not be kept for the next time");
    return areSettingsKept && isPatchKept;
}

#ifdef VANTORIC_WINDOW
// The display has gone, and no call of the window library may be made any more: what there is to save is saved.
[[noreturn]] void endWithoutDisplay(Standalone& program, KeptSettings& settings, const KeptStart& start) {
    keep(program, settings, start);
    program.finish();
    say(program.takeNews());
    program.plugged().showMessages();
    std::_Exit(complain(Exit::noDisplay, "the display has gone; the patch is kept for the next start"));
}
#endif

// False if there is no display.
bool runWithWindow(Standalone& program, KeptSettings& settings, const KeptStart& start, const Options& options) {
#ifdef VANTORIC_WINDOW
    MainWindow window(program, settings);
    if (!window.open()) return false;
    program.setBoxesShown(true);
    while (!isOver(program, options) && window.isOpen()) window.runOnce();
    if (window.isLost()) endWithoutDisplay(program, settings, start);
    return true;
#else
    static_cast<void>(program), static_cast<void>(settings), static_cast<void>(start), static_cast<void>(options);
    return false;
#endif
}

// What is played first: the patch that was asked for, else the one from the last time, else the welcome patch. An exit code.
Exit choosePatch(Standalone& program, const Options& options, bool isKeptAgain) {
    PatchLoad loaded = PatchLoad::done;
    if (options.patch.empty())
        program.loadLastPatch(isKeptAgain);
    else
        loaded = program.loadPatch(options.patch);
    if (!options.withWindow || loaded != PatchLoad::done) program.plugged().showMessages();  // a window has boxes for them
    if (loaded == PatchLoad::done) return Exit::done;
    complain(Exit::noPatch, options.patch + (loaded == PatchLoad::missing ? ": no such patch" : ": is no patch, or damaged"));
    return Exit::noPatch;
}

// With sound, or with a window, where it may come later.
bool startSound(Standalone& program, const SoundChoice& choice, bool withWindow) {
    const bool isHeard = program.sound().open(choice);
    if (isHeard && choice.kind == SoundKind::none) return say("sound: none"), true;
    if (isHeard) return say("sound: " + program.sound().description() + ", " + program.sound().priority()), true;
    complain(Exit::noSound, "no sound: " + program.sound().problem());
    return withWindow;
}

bool startRecording(Standalone& program, const std::string& path, std::string& problem) {
    return program.recorder().start(path, static_cast<int>(program.player().rate()), problem);
}

// A build without a window plays without one, and keeps what one with it would keep.
bool hasWindow() {
#ifdef VANTORIC_WINDOW
    return true;
#else
    return false;
#endif
}

int run(const Options& asked) {
    chooseDataFolder();
    Options options = asked;
    options.withWindow = asked.withWindow && hasWindow();
    KeptSettings settings = readKeptSettings();
    KeptStart start{settings, {}};
    platform::WrittenDialogs written;  // without a window of its own
    Standalone program(written);
    const SoundChoice choice = chosenSound(settings.sound, options);
    if (options.listDevices) return listDevices(program);
    if (const std::string unused = unusedDevice(options); !unused.empty()) complain(Exit::done, unused);
    if (options.probe) return probe(program, choice);
    if (options.withWindow && !hasDisplay())
        return complain(Exit::noDisplay, "there is no display. --no-window plays without one.");
    if (const Exit chosen = choosePatch(program, options, asked.withWindow); chosen != Exit::done)
        return static_cast<int>(chosen);
    if (asked.withWindow && options.patch.empty()) start.patch = markOfPatch(program.plugged());
    program.player().setTempo(settings.tempo);
    program.hands().setOctave(settings.octave);
    program.midi().setUnwanted(settings.unwantedInputs);
    // A file that is there is written over only once there is something to record.
    if (!options.record.empty()) program.recorder().listen(choice.rate);
    if (!startSound(program, choice, options.withWindow)) return static_cast<int>(Exit::noSound);
    if (std::string problem; !options.record.empty() && !startRecording(program, options.record, problem))
        return complain(Exit::noRecording, options.record + ": " + problem);
    program.midi().poll(program.sound().midi());
    say("MIDI: " + program.midi().description());
    if (asked.withWindow && !options.withWindow) say("This program has no window: it plays until Ctrl-C.");
    if (!options.withWindow)
        runWithoutWindow(program, options);
    else if (!runWithWindow(program, settings, start, options))
        return complain(Exit::noDisplay, "the window could not be opened");
    const bool isKept = !asked.withWindow || keep(program, settings, start);
    const bool isWhole = program.finish();
    say(program.takeNews());
    report(program);
    const Exit exit = !isWhole ? Exit::noRecording : isKept ? Exit::done : Exit::trouble;
    return static_cast<int>(exit);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words = commandLine(argc, argv);
    std::vector<char*> texts;
    texts.reserve(words.size());
    for (std::string& word : words) texts.push_back(word.data());
    Options options;
    if (const auto answered = readOptions(static_cast<int>(texts.size()), texts.data(), options))
        return static_cast<int>(*answered);
    watchForEnd(wantEnd);
    int code = 0;
    try {
        code = run(options);
    } catch (const std::exception& error) {
        code = complain(Exit::trouble, error.what());
    }
    tellEnd();
    return code;
}

#include "tests/window/drive_commands.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>

namespace testhost {
namespace {

bool isOnShow(WindowHost& host, const std::string& words) {
    char name[64] = {};
    host.plugin().call(wire::opProgramName, 0, 0, name);
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    return lower.find(words) != std::string::npos;
}

// The first row of the library's list, at the normal size: empty until a patch was found.
bool hasFirstRow(WindowHost& host) {
    const Picture row = host.glance().part(330, 276, 200, 22);
    for (std::size_t i = 3; i < row.rgb.size(); ++i)
        if (row.rgb[i] != row.rgb[i % 3]) return true;
    return false;
}

// Opens the library, types and takes what it found, once the list has come to rest with it: on a busy machine that takes its
// time.
bool takeFromLibrary(WindowHost& host, const std::string& words) {
    host.click(46, 83);
    host.idle(1500);
    host.type(words);
    const bool isFound = host.until([&] { return host.picture(), hasFirstRow(host); }, 30);
    if (isFound) {
        host.key("Return");
        host.until([&] { return isOnShow(host, words); }, 10);
    }
    for (int i = 0; i < 2; ++i) {  // out of the search, and of the library
        host.key("Escape");
        host.idle(15);
    }
    host.idle(500);
    return isOnShow(host, words);
}

// At the normal size.
bool load(WindowHost& host, const std::string& words) {
    for (int tried = 0; tried < 3; ++tried)
        if (takeFromLibrary(host, words)) return true;
    return false;
}

}  // namespace

bool drive(WindowHost& host, const std::string& line) {
    std::istringstream words(line);
    std::string command, text;
    double a = 0, b = 0, c = 0, d = 0;
    words >> command;
    if (command == "open") {
        const bool isOpen = host.open();
        std::cout << (isOpen ? "open\n" : "no window\n");
        return isOpen;
    }
    if (command == "close")
        host.close();
    else if (command == "idle" && words >> a)
        host.idle(static_cast<int>(a));
    else if (command == "move" && words >> a >> b)
        host.move(a, b);
    else if (command == "press" && words >> a)
        host.press(static_cast<int>(a));
    else if (command == "release" && words >> a)
        host.release(static_cast<int>(a));
    else if (command == "click" && words >> a >> b)
        host.click(a, b, words >> c ? static_cast<int>(c) : 1);
    else if (command == "double" && words >> a >> b)
        host.doubleClick(a, b);
    else if (command == "drag" && words >> a >> b >> c >> d) {
        int button = 1;
        words >> button;
        host.drag(a, b, c, d, button == 0 ? 1 : button);
    } else if (command == "wheel" && words >> a >> b >> c)
        host.wheel(a, b, static_cast<int>(c));
    else if (command == "key" && words >> text)
        host.key(text);
    else if (command == "down" && words >> text)
        host.keyDown(text);
    else if (command == "up" && words >> text)
        host.keyUp(text);
    else if (command == "type" && std::getline(words >> std::ws, text))
        host.type(text);
    else if (command == "picture" && words >> text) {
        const bool isSaved = host.savePicture(text);
        std::cout << (isSaved ? text : "no picture") << '\n';
        return isSaved;
    } else if (command == "load" && std::getline(words >> std::ws, text))
        return load(host, text);
    else if (command == "parameter" && words >> a)
        std::cout << host.plugin().parameter(static_cast<int>(a)) << '\n';
    else if (command == "set" && words >> a >> b)
        host.plugin().setParameter(static_cast<int>(a), static_cast<float>(b));
    else if (command == "midi" && words >> a >> b >> c)
        host.plugin().midi(static_cast<int>(a), static_cast<int>(b), static_cast<int>(c));
    else if (command == "play" && words >> a) {
        for (int i = 0; i < static_cast<int>(a); ++i) host.plugin().render(512);
    } else {
        return command.empty() || command[0] == '#';
    }
    return true;
}

}  // namespace testhost

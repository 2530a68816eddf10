// Drives the instrument's window by commands, one a line on standard input: for looking at it by hand and by script.
//   open | close | idle MS | move X Y | press B | release B | click X Y [B] | double X Y | drag X0 Y0 X1 Y1 [B] | wheel X Y N
//   key NAME | down NAME | up NAME | type TEXT | picture FILE.png | parameter N | set N VALUE | midi STATUS D1 D2 | play BLOCKS
// usage: window-drive PLUGIN.so
#include <iostream>
#include <sstream>

#include "tests/window/window_host.h"

namespace {

bool run(testhost::WindowHost& host, const std::string& line) {
    std::istringstream words(line);
    std::string command, text;
    double a = 0, b = 0, c = 0, d = 0;
    words >> command;
    if (command == "open")
        std::cout << (host.open() ? "open\n" : "no window\n");
    else if (command == "close")
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
    else if (command == "picture" && words >> text)
        std::cout << (host.savePicture(text) ? text : "no picture") << '\n';
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

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: window-drive PLUGIN.so, with commands on standard input\n";
        return 2;
    }
    try {
        testhost::WindowHost host(argv[1]);
        for (std::string line; std::getline(std::cin, line);)
            if (!run(host, line)) std::cerr << "not understood: " << line << '\n';
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
    return 0;
}

// Drives the instrument's window by commands, one a line on standard input: for looking at it by hand and by script.
//   open | close | idle MS | move X Y | press B | release B | click X Y [B] | double X Y | drag X0 Y0 X1 Y1 [B] | wheel X Y N
//   key NAME | down NAME | up NAME | type TEXT | picture FILE.png | parameter N | set N VALUE | midi STATUS D1 D2 | play BLOCKS
//   load WORDS, the first patch that the library finds for them
// A line that fails is told, and ends in 1 once all lines are done: an unknown one, a window that does not open, a picture that
// cannot be saved, a patch that is not found.
// usage: window-drive PLUGIN.so
#include <iostream>

#include "tests/window/drive_commands.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: window-drive PLUGIN.so, with commands on standard input\n";
        return 2;
    }
    bool hasFailed = false;
    try {
        testhost::WindowHost host(argv[1]);
        for (std::string line; std::getline(std::cin, line);) {
            if (testhost::drive(host, line)) continue;
            std::cerr << "failed: " << line << '\n';
            hasFailed = true;
        }
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
    return hasFailed ? 1 : 0;
}

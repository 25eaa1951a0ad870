// rynctl: a command-line view of the library, the driver it reaches and the
// board behind it.
#include <cstring>

#include "Rynctl.h"

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: rynctl demo                      the library at work on the board (see demo --help)\n"
                 "       rynctl info                      library and driver versions\n"
                 "       rynctl list                      the board's device tree\n"
                 "       rynctl attr DEVICE [ID [VALUE]]  read or set attributes\n"
                 "       rynctl events DEVICE [--count N] [--timeout MS]\n"
                 "                                        print event records as they come\n"
                 "       rynctl load DEVICE FILE [--entry NAME]\n"
                 "                                        load and start a DSP program file\n"
                 "       rynctl record SOURCE FILE.wav [--seconds N]\n"
                 "                                        record a generator or dialler block\n"
                 "       rynctl play FILE.wav DETECTOR    feed a WAV file to a detector block\n"
                 "       rynctl spm list | run DEVICE MODULE\n"
                 "                                        the built-in DSP modules\n"
                 "       rynctl coff FILE [--entry NAME]  what a DSP program file holds\n"
                 "       rynctl image FILE -o OUT [--records] [--entry NAME]\n"
                 "                                        a program image made from a program file\n"
                 "Each command takes --help.\n");
    return 2;
}

struct Command {
    const char *name;
    int (*run)(int argc, char **argv);
};

constexpr Command kCommands[] = {
    {"demo", rynctl::demo}, {"list", rynctl::list}, {"attr", rynctl::attr},   {"events", rynctl::events},
    {"load", rynctl::load}, {"record", rynctl::record}, {"play", rynctl::play}, {"spm", rynctl::spm},
    {"coff", rynctl::coff}, {"image", rynctl::image},
};

}  // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::strcmp(argv[1], "info") == 0) return rynctl::info();
    for (const Command &command : kCommands)
        if (argc >= 2 && std::strcmp(argv[1], command.name) == 0) return command.run(argc - 2, argv + 2);
    return usage();
}

// rynctl: a command-line view of the library, the driver it reaches and the
// board behind it. This file reads the command line: each command adds its
// part of the parser (in the file of its area), and runs once the whole line
// has been read and checked.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <iostream>

#include "Rynctl.h"

namespace rynctl {

CLI::Option *addNumber(CLI::App &app, const std::string &name, uint32_t &value, const std::string &description,
                       uint32_t low, uint32_t high) {
    std::string expected = "expected a number (decimal or 0x hexadecimal)";
    if (low != 0 || high != 0xFFFFFFFFu)
        expected = "expected a number from " + std::to_string(low) + " to " + std::to_string(high) +
                   " (decimal or 0x hexadecimal)";
    return app
        .add_option_function<std::string>(
            name, [&value](const std::string &text) { value = *parseNumber(text.c_str()); }, description)
        ->check(CLI::Validator(
            [low, high, expected](std::string &text) -> std::string {
                const auto number = parseNumber(text.c_str());
                return number && *number >= low && *number <= high ? "" : expected + ", not \"" + text + "\"";
            },
            ""))
        ->type_name("N");
}

CLI::Option *addDevice(CLI::App &app, std::string &value, const std::string &description) {
    return app.add_option("DEVICE", value, description)
        ->required()
        ->check(CLI::Validator(
            [](std::string &text) -> std::string {
                if (parseNumber(text.c_str())) return "";
                const size_t colon = text.find(':');
                std::vector<std::string> types;
                for (int32_t type = RYN_VB_DEVICE_BOARD; typeName(type) != nullptr; ++type)
                    types.push_back(typeName(type));
                const std::string type = text.substr(0, colon);
                if (colon != std::string::npos && parseNumber(text.c_str() + colon + 1) &&
                    std::find(types.begin(), types.end(), type) != types.end())
                    return "";
                std::string why = "\"" + text +
                                  "\" names no device: expected TYPE:NUMBER with TYPE board, t1e1, "
                                  "dsp, hdlc, raw, burst, pots, slic or jtag (dsp:0, hdlc:1), or a driver handle";
                const std::string near = nearest(type, types);
                if (!near.empty() && colon != std::string::npos)
                    why += " (did you mean '" + near + text.substr(colon) + "'?)";
                return why;
            },
            ""));
}

// Edits between two names, letters compared without regard to case and two
// neighbours swapped counted as one edit (optimal string alignment).
std::string nearest(const std::string &given, const std::vector<std::string> &names) {
    const auto strip = [](const std::string &s) { return s.substr(std::min(s.find_first_not_of('-'), s.size())); };
    const std::string a = strip(given);
    std::string best;
    size_t bestDistance = 3;  // more than two edits is no slip
    for (const std::string &name : names) {
        const std::string b = strip(name);
        std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
        for (size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
        for (size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
        for (size_t i = 1; i <= a.size(); ++i) {
            for (size_t j = 1; j <= b.size(); ++j) {
                const bool same = std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                                  std::tolower(static_cast<unsigned char>(b[j - 1]));
                d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (same ? 0 : 1)});
                if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                    d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
            }
        }
        // A name of one or two letters is near only when it differs by less than half its letters.
        const size_t distance = d[a.size()][b.size()];
        if (distance < bestDistance && 2 * distance <= a.size()) {
            best = name;
            bestDistance = distance;
        }
    }
    return best;
}

namespace {

constexpr const char *kExitStatus =
    "Exit status: 0 done; 1 the board or driver refused (no driver answered, a request failed, a file\n"
    "could not be read or written) or, for play, nothing was detected; 2 the command line is wrong\n"
    "(usage, an unknown command or option, a bad value).";

// The long names and the short names of the options of `app`, as typed.
std::vector<std::string> optionNames(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames()) names.push_back("--" + name);
        for (const std::string &name : option->get_snames()) names.push_back("-" + name);
    }
    return names;
}

// The names of the commands `app` has.
std::vector<std::string> commandNames(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands({})) names.push_back(command->get_name());
    return names;
}

// A command line that cannot be run: what is wrong, on standard error, with
// the nearest valid name where an unknown one was given.
int usageError(CLI::App &rynctl, const CLI::ParseError &error) {
    // The command the line reached: the deepest one named.
    CLI::App *app = &rynctl;
    std::string who = "rynctl";
    while (!app->get_subcommands().empty()) {
        app = app->get_subcommands().front();
        who += " " + app->get_name();
    }
    const std::vector<std::string> extra = app->remaining();
    const auto option = std::find_if(extra.begin(), extra.end(), [](const std::string &s) {
        return s.size() > 1 && s[0] == '-' && !parseWord(s.c_str());
    });
    std::string message, near;
    if (option != extra.end()) {
        const std::string name = option->substr(0, option->find('='));
        message = "unknown option '" + name + "'";
        near = nearest(name, optionNames(*app));
    } else if (!extra.empty() && !commandNames(*app).empty()) {
        message = "unknown command '" + extra.front() + "'";
        near = nearest(extra.front(), commandNames(*app));
    } else if (!extra.empty()) {
        message = "unexpected argument '" + extra.front() + "'";
    } else if (app == &rynctl) {
        std::cerr << rynctl.help();  // no command at all
        return kExitUsage;
    } else if (!commandNames(*app).empty()) {
        message = "a command is required: " + CLI::detail::join(commandNames(*app), " or ");
    } else {
        message = error.what();
    }
    std::cerr << who << ": " << message;
    if (!near.empty()) std::cerr << " (did you mean '" << near << "'?)";
    std::cerr << "\nRun '" << who << " --help' for its usage.\n";
    return kExitUsage;
}

}  // namespace
}  // namespace rynctl

int main(int argc, char **argv) {
    using namespace rynctl;
    CLI::App rynctl("rynctl " + std::string(RYNCTL_VERSION_TEXT) +
                        ": a command-line view of the RynHwDll library, the driver it reaches and the board "
                        "behind it.",
                    "rynctl");
    rynctl.get_formatter()->column_width(28);
    rynctl.require_subcommand(1);
    rynctl.set_version_flag(
        "--version",
        [] { return "rynctl " + std::string(RYNCTL_VERSION_TEXT) + "\nRynHwDll library " + libraryVersion(); },
        "print the versions of rynctl and of the library it runs with, and exit");
    rynctl.set_help_flag("-h,--help", "print this help and exit");
    const Command commands[] = {
        demoCommand(rynctl),   infoCommand(rynctl), listCommand(rynctl),   attrCommand(rynctl),
        eventsCommand(rynctl), loadCommand(rynctl), recordCommand(rynctl), playCommand(rynctl),
        spmCommand(rynctl),    coffCommand(rynctl), imageCommand(rynctl),  resultCommand(rynctl),
    };
    // Plainer help: commands rather than subcommands, arguments listed by
    // their names alone, the exit status under each command.
    rynctl.get_formatter()->label("SUBCOMMAND", "COMMAND");
    rynctl.get_formatter()->label("Positionals", "Arguments");
    const std::function<void(CLI::App &)> tidy = [&tidy](CLI::App &app) {
        for (CLI::Option *option : app.get_options())
            if (option->get_positional()) option->type_name("");
        for (CLI::App *command : app.get_subcommands({})) {
            command->group("Commands");
            command->footer(command->get_footer() + "\n" + kExitStatus);
            tidy(*command);
        }
    };
    tidy(rynctl);
    // Set after the commands were added, which would otherwise inherit it.
    rynctl.footer(std::string("Each command takes -h or --help. Each command that reaches the board connects to\n"
                              "the driver for itself (the virtual board lives as long as that connection).\n") +
                  kExitStatus);
    try {
        rynctl.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        std::cout << rynctl.help();
        return kExitDone;
    } catch (const CLI::CallForVersion &version) {
        std::cout << version.what() << "\n";
        return kExitDone;
    } catch (const CLI::ParseError &error) {
        return usageError(rynctl, error);
    }
    for (const Command &command : commands)
        if (command.app->parsed()) return command.run();
    return kExitUsage;
}

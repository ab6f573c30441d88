// kelcc - the command-line face of libkelccpx: its colour conversions on
// image and raw video files, for trying and scripting the library without
// writing C.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <kelcore.h>

#include "commands.h"
#include "frame.h"

using namespace kelcctool;

namespace kelcctool {
const char* modelManual();
}

namespace {

int parseInt(const std::string& text, const std::string& option, long low, long high)
{
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || errno || v < low || v > high)
        throw UsageFailure(option + " wants a whole number in " + std::to_string(low) + ".." + std::to_string(high) + ", not '" + text + "'");
    return static_cast<int>(v);
}

bool takes(const Command& c, const std::string& option)
{
    const std::string list = std::string(" ") + c.options + " ";
    return list.find(" " + option + " ") != std::string::npos;
}

const char* manualOf(const Command& c) { return c.manual ? c.manual : modelManual(); }

Options parse(const Command& c, int argc, char** argv)
{
    Options o;
    bool optionsDone = false;
    for (int i = 2; i < argc; ++i) {
        std::string arg = argv[i];
        if (optionsDone || arg.size() < 2 || arg[0] != '-') {
            o.args.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsDone = true;
            continue;
        }
        if (arg == "-v") arg = "--verbose";
        if (arg == "-h") arg = "--help";
        if (arg.rfind("--", 0) != 0) throw UsageFailure("unknown option " + arg + " (kelcc " + c.name + " --help)");
        std::string name = arg.substr(2), value;
        bool hasValue = false;
        if (const auto eq = name.find('='); eq != std::string::npos) {
            value = name.substr(eq + 1);
            name = name.substr(0, eq);
            hasValue = true;
        }
        if (!takes(c, name)) throw UsageFailure("unknown option --" + name + " for " + c.name + " (kelcc " + c.name + " --help)");
        const bool flag = name == "verbose" || name == "help" || name == "inverse" || name == "rev" || name == "crop";
        if (flag) {
            if (hasValue) throw UsageFailure("--" + name + " takes no value");
        } else if (!hasValue) {
            if (i + 1 >= argc) throw UsageFailure("--" + name + " needs a value");
            value = argv[++i];
        }
        if (name == "verbose") verbose = true;
        else if (name == "help") o.help = true;
        else if (name == "inverse") o.inverse = true;
        else if (name == "rev") o.rev = true;
        else if (name == "crop") o.crop = true;
        else if (name == "from") o.from = value;
        else if (name == "to") o.to = value;
        else if (name == "size") o.size = value;
        else if (name == "matrix") o.matrix = value;
        else if (name == "method") o.method = value;
        else if (name == "range") o.range = value;
        else if (name == "pattern") o.pattern = value;
        else if (name == "threads") o.threads = parseInt(value, "--threads", 1, 1024);
        else if (name == "levels") {
            o.levels = parseInt(value, "--levels", 2, 65536);
            o.hasLevels = true;
        } else if (name == "noise") o.noise = parseInt(value, "--noise", 0, 100);
        else if (name == "frame") o.frame = parseInt(value, "--frame", 1, INT_MAX);
        else if (name == "depth") {
            o.depth = parseInt(value, "--depth", 8, 32);
            if (o.depth != 8 && o.depth != 16 && o.depth != 32) throw UsageFailure("--depth is 8, 16 or 32");
        }
    }
    return o;
}

int usage()
{
    std::fputs("usage: kelcc COMMAND [OPTIONS] IN OUT    (kelcc help for the commands)\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) return usage();
    const std::string name = argv[1];
    try {
        if (name == "help" || name == "--help" || name == "-h") {
            if (argc > 2 && std::string(argv[2]) == "formats") std::fputs(formatsManual(), stdout);
            else if (argc > 2) {
                const Command* c = findCommand(argv[2]);
                if (!c) throw UsageFailure(std::string("unknown command '") + argv[2] + "' (kelcc help lists them)");
                std::fputs(manualOf(*c), stdout);
            } else {
                std::fputs(overviewManual(), stdout);
            }
            return 0;
        }
        const Command* c = findCommand(name);
        if (!c) throw UsageFailure("unknown command '" + name + "' (kelcc help lists them)");
        const Options o = parse(*c, argc, argv);
        if (o.help) {
            std::fputs(manualOf(*c), stdout);
            return 0;
        }
        if (o.threads > 0) threads_omp_of_n_kel = o.threads;
        c->run(o);
        return 0;
    } catch (const Failure& f) {
        std::fprintf(stderr, "kelcc: %s\n", f.what());
        return f.status;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "kelcc: out of memory\n");
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "kelcc: %s\n", e.what());
        return 1;
    }
}

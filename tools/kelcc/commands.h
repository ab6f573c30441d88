// commands.h - kelcc's subcommands and their manual pages.
#pragma once

#include <string>
#include <vector>

namespace kelcctool {

struct Options {
    std::vector<std::string> args;  // positional: IN OUT
    std::string from, to, size, matrix, method, range, pattern;
    int threads = 0;
    int levels = 0;
    int noise = 0;
    int frame = 0;  // 1-based; 0 for every frame
    int depth = 0;
    bool hasLevels = false, inverse = false, rev = false, crop = false, help = false;
};

struct Command {
    const char* name;
    const char* summary;
    const char* options;  // the options it takes, space-separated
    const char* manual;
    void (*run)(const Options&);
};

const std::vector<Command>& commands();
const Command* findCommand(const std::string& name);
const char* formatsManual();
const char* overviewManual();

}  // namespace kelcctool

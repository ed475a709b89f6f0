#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "fuzzing.h"
#include "system/files.h"

// Stands in for libFuzzer where there is none: gives the target each file that the command line
// names, and each in the folders that it names.

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<std::string> files;
    for (const std::string& path : std::vector<std::string>(argv + 1, argv + argc)) {
        if (fs::is_regular_file(path)) files.push_back(path);
        if (!fs::is_directory(path)) continue;
        for (const auto& entry : fs::directory_iterator(path)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    for (const std::string& file : files) {
        fmt::print("{}\n", file);
        static_cast<void>(std::fflush(stdout));
        const auto bytes = tkv::readFile(file);
        if (!bytes) return 1;
        // A separate allocation, so that the address sanitizer catches over-reads.
        LLVMFuzzerTestOneInput(bytes->data(), bytes->size());
    }
    fmt::print("{} inputs\n", files.size());
    return files.empty() ? 1 : 0;
}

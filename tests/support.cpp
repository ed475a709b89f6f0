#include "support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "platform/files.h"
#include "platform/verbose.h"

extern char** environ;

namespace tkv::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "tkv-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TempFolder::write(const std::string& name, const std::string& content) const {
    const std::string target = file(name);
    fs::create_directories(fs::path(target).parent_path());
    std::ofstream(target, std::ios::binary) << content;
    return target;
}

ScopedVariable::ScopedVariable(std::string name, const std::string& value)
    : name_(std::move(name)), wasSet_(false) {
    if (const char* before = std::getenv(name_.c_str())) {
        before_ = before;
        wasSet_ = true;
    }
    setenv(name_.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
    if (wasSet_) {
        setenv(name_.c_str(), before_.c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> namesIn(const std::string& folder) {
    return folderNames(folder).value_or(std::vector<std::string>{});
}

std::string errorsOf(const std::function<void()>& action) {
    const TempFolder folder;
    const std::string path = folder.file("stderr");
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
    action();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    static const std::regex prefix(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} tkvDvdMenuImg\[\d+:1\] )");
    return std::regex_replace(readText(path), prefix, "");
}

std::string verboseErrorsOf(const std::function<void()>& action) {
    setVerbose(1);
    std::string text = errorsOf(action);
    setVerbose(0);
    return text;
}

void PrintTo(const Rgba& color, std::ostream* out) {
    *out << "rgba(" << color.red << ", " << color.green << ", " << color.blue << ", " << color.alpha
         << ")";
}

Rgba pixel(const Bitmap& bitmap, int x, int y) {
    const std::uint32_t word = bitmap.row(y)[x];
    const int alpha = static_cast<int>(word >> 24U);
    const auto channel = [&](unsigned shift) {
        const int value = static_cast<int>((word >> shift) & 0xFFU);
        return alpha == 0 ? 0 : (value * 255 + alpha / 2) / alpha;
    };
    return {channel(16), channel(8), channel(0), alpha};
}

bool near(const Rgba& a, const Rgba& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && std::abs(a.alpha - b.alpha) <= tolerance;
}

int worstDifference(const Bitmap& a, const Bitmap& b) {
    int worst = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            while (!near(pixel(a, x, y), pixel(b, x, y), worst))
                ++worst;
        }
    }
    return worst;
}

Bitmap painted(PixelSize size, const std::function<Rgba(int x, int y)>& paint) {
    Bitmap bitmap = Bitmap::create(size).value();
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const Rgba color = paint(x, y);
            const auto channel = [&](int value) {
                return static_cast<std::uint32_t>((value * color.alpha + 127) / 255);
            };
            bitmap.row(y)[x] = static_cast<std::uint32_t>(color.alpha) << 24U |
                               channel(color.red) << 16U | channel(color.green) << 8U |
                               channel(color.blue);
        }
    }
    return bitmap;
}

Outcome run(const std::vector<std::string>& words) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return {-1, "no pipe"};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    Outcome outcome{-1, ""};
    if (error == 0) {
        std::array<char, 4096> buffer{};
        for (ssize_t got; (got = read(ends[0], buffer.data(), buffer.size())) > 0;) {
            outcome.output.append(buffer.data(), static_cast<std::size_t>(got));
        }
        int status = 0;
        waitpid(child, &status, 0);
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } else {
        outcome.output = words[0] + ": not found";
    }
    close(ends[0]);
    return outcome;
}

}  // namespace tkv::test

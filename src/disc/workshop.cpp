#include "disc/workshop.h"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

constexpr const char* kUnfinished = "unfinished";

// To be changed when the program makes something else of the same inputs.
constexpr const char* kRecipe = "1";

// FNV-1a with 64 bits, as its authors give it. Each word ends with a byte that no word holds.
std::uint64_t hashOf(const std::vector<std::string>& words) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    const auto take = [&hash](char byte) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    };
    for (const std::string& word : words) {
        for (const char byte : word)
            take(byte);
        take('\0');
    }
    return hash;
}

}  // namespace

Workshop::Workshop() {
    fs::remove_all(kUnfinished);
    fs::create_directory(kUnfinished);
}

Workshop::~Workshop() {
    std::error_code error;
    fs::remove_all(kUnfinished, error);
}

std::string Workshop::nameOf(std::string_view kind, std::string_view extension,
                             const std::vector<std::string>& inputs) {
    std::vector<std::string> words = inputs;
    words.emplace_back(kRecipe);
    return fmt::format("{}-{:016x}{}", kind, hashOf(words), extension);
}

bool Workshop::has(const std::string& name) {
    if (!fs::exists(name)) return false;
    const std::lock_guard lock(mutex_);
    used_.insert(name);
    return true;
}

std::string Workshop::result(const std::string& name,
                             const std::function<void(const std::string&)>& make) {
    if (has(name)) return name;
    make(unfinished(name));
    finish(name);
    return name;
}

std::string Workshop::unfinished(const std::string& name) {
    return fmt::format("{}/{}", kUnfinished, name);
}

void Workshop::finish(const std::string& name) {
    fs::rename(unfinished(name), name);
    const std::lock_guard lock(mutex_);
    used_.insert(name);
}

Workshop::Turn::Turn(Workshop& workshop, const std::string& name)
    : workshop_(workshop), name_(name) {
    std::unique_lock lock(workshop_.mutex_);
    workshop_.changed_.wait(lock, [&] { return !workshop_.turns_.contains(name_); });
    workshop_.turns_.insert(name_);
}

Workshop::Turn::~Turn() {
    const std::lock_guard lock(workshop_.mutex_);
    workshop_.turns_.erase(name_);
    workshop_.changed_.notify_all();
}

void Workshop::removeUnused() const {
    for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
        if (!used_.contains(entry.path().filename().string())) fs::remove_all(entry.path());
    }
}

}  // namespace tkv::disc

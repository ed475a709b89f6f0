#include "disc/run/workshop.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <regex>
#include <string_view>
#include <utility>

#include "disc/run/fault.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

constexpr const char* kUnfinished = "unfinished";
constexpr const char* kRecords = "results";

// What else it has in its folder.
constexpr std::array<std::string_view, 4> kOthers{kUnfinished, kRecords, Workshop::kLog,
                                                  Tools::kLog};

// Up to here, reading a result costs nothing beside what is done with it; a disc of films takes a
// tenth longer.
constexpr std::uint64_t kMostCheap = 32 << 20;

// To be changed when the program makes something else of the same inputs.
constexpr const char* kRecipe = "4";

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

// Whether nameOf may have made the name.
bool isResult(const std::string& name) {
    static const std::regex pattern(R"([a-z]+-[0-9a-f]{16}(\.[a-z]+)?)");
    return std::regex_match(name, pattern);
}

}  // namespace

Workshop::Workshop(std::string folder, ProgramStop& stop, ResultCheck check)
    : folder_(std::move(folder)),
      tools_(folder_.path(), stop),
      check_(std::move(check)),
      records_(path(kRecords)) {
    fs::remove_all(path(kUnfinished));
    fs::remove(path(Tools::kLog));
    fs::create_directory(path(kUnfinished));
}

Workshop::~Workshop() {
    std::error_code error;
    if (folder_.isInPlace()) fs::remove_all(path(kUnfinished), error);
}

std::string Workshop::path(std::string_view name) const {
    return name.empty() ? folder_.path() : joinPath(folder_.path(), name);
}

std::string Workshop::nameOf(std::string_view kind, std::string_view extension,
                             const std::vector<std::string>& inputs) {
    std::vector<std::string> words = inputs;
    words.emplace_back(kRecipe);
    return fmt::format("{}-{:016x}{}", kind, hashOf(words), extension);
}

bool Workshop::has(const std::string& name) {
    {
        const std::lock_guard lock(mutex_);
        if (used_.contains(name)) return true;
    }
    if (!fs::exists(path(name)) || !isWhole(name)) return false;
    const std::lock_guard lock(mutex_);
    used_.insert(name);
    return true;
}

bool Workshop::isWhole(const std::string& name) {
    const std::optional<ResultRecord> made = [&] {
        const std::lock_guard lock(mutex_);
        return records_.of(name);
    }();
    if (made) {
        const bool readsAll = check_.readsAll || made->bytes <= kMostCheap;
        ResultRecord found = recordOf(path(name), readsAll);
        if (!readsAll) found.checksum = made->checksum;
        if (found == made) return true;
    }
    folder_.requireInPlace();
    fs::remove_all(path(name));
    if (check_.say) check_.say(fmt::format("{} is damaged, and is made again.", path(name)));
    return false;
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

std::string Workshop::newFolder(const std::string& name) const {
    fs::create_directory(path(unfinished(name)));
    return unfinished(name);
}

void Workshop::finish(const std::string& name) {
    const std::string made = path(unfinished(name));
    if (!fs::is_symlink(made) && !flushToDisk(made)) failOn(made, "written");
    const ResultRecord record = recordOf(made, true);
    const std::lock_guard lock(mutex_);
    records_.add(name, record);
    fs::rename(made, path(name));
    // Where that fails, the result is made again after a power cut.
    static_cast<void>(fsync(folder_.descriptor()));
    used_.insert(name);
}

Workshop::Lock::Lock(Workshop& workshop, const std::string& name)
    : workshop_(workshop), name_(name) {
    std::unique_lock lock(workshop_.mutex_);
    workshop_.changed_.wait(lock, [&] { return !workshop_.locks_.contains(name_); });
    workshop_.locks_.insert(name_);
}

Workshop::Lock::~Lock() {
    const std::lock_guard lock(workshop_.mutex_);
    workshop_.locks_.erase(name_);
    workshop_.changed_.notify_all();
}

void Workshop::removeUnused() const {
    folder_.requireInPlace();
    for (const std::string& name : folderNames(folder_.path()).value_or(Names{})) {
        if (isResult(name) && !used_.contains(name)) fs::remove_all(path(name));
    }
}

void Workshop::removeAll() const {
    folder_.requireInPlace();
    for (const std::string& name : folderNames(folder_.path()).value_or(Names{})) {
        if (isResult(name) || std::ranges::count(kOthers, name) > 0) fs::remove_all(path(name));
    }
    std::error_code error;
    fs::remove(path(kMarker), error);
    fs::remove(folder_.path(), error);
}

}  // namespace tkv::disc

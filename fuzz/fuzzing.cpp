#include "fuzzing.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "graphics/pixels.h"
#include "system/files.h"
#include "system/log.h"

namespace tkv::fuzz {

namespace fs = std::filesystem;

namespace {

class Scratch {
  public:
    Scratch() {
        std::string pattern = fs::temp_directory_path() / "tkv-fuzz-XXXXXX";
        require(mkdtemp(pattern.data()) != nullptr, "there is no temporary folder");
        path_ = fs::canonical(pattern);
        for (const char* const name : {"HOME", "XDG_DATA_HOME"})
            setenv(name, path_.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): there is one thread
        setLogSink([](std::string_view) {});
    }
    ~Scratch() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

void require(bool holds, std::string_view what) {
    if (holds) return;
    fmt::print(stderr, "Does not hold: {}\n", what);
    std::abort();
}

/// libFuzzer counts these as coverage. The libraries that do most of the work have none, but an
/// input that takes them longer is worth changing further.
__attribute__((section("__libfuzzer_extra_counters"))) std::uint8_t costs[32];

TimeLimit::~TimeLimit() {
    const double seconds = static_cast<double>(std::clock() - began_) / CLOCKS_PER_SEC;
    const auto square = static_cast<std::uint64_t>(1e6 * seconds * seconds);  // of milliseconds
    costs[static_cast<std::size_t>(std::bit_width(square)) % std::size(costs)] = 1;
    require(seconds <= seconds_, fmt::format("{:.2f} of at most {} s", seconds, seconds_));
}

const std::string& scratchFolder() {
    static const Scratch scratch;
    return scratch.path();
}

std::string scratchFile(std::string_view name, const std::uint8_t* data, std::size_t size) {
    std::string path = scratchFolder() + "/" + std::string(name);
    require(writeFile(path, {data, size}), "the scratch folder can be written to");
    return path;
}

void requireSound(const Bitmap& bitmap) {
    require(bitmap.width() > 0 && bitmap.height() > 0, "a bitmap has pixels");
    require(bitmap.nominalSize().width > 0 && bitmap.nominalSize().height > 0,
            "a bitmap has a nominal size");
    bool isSound = true;
    for (int y = 0; y < bitmap.height(); ++y) {
        for (const std::uint32_t* at = bitmap.row(y); at != bitmap.row(y) + bitmap.width(); ++at)
            isSound = isSound && std::max({redOf(*at), greenOf(*at), blueOf(*at)}) <= alphaOf(*at);
    }
    require(isSound, "no colour is above its alpha");
}

double Input::between(double least, double most) {
    const int high = byte();
    return least + (most - least) * (high * 256 + byte()) / 65535;
}

std::string Input::word() {
    const std::uint8_t* const zero = std::find(data_, end_, std::uint8_t{0});
    std::string text(data_, zero);
    data_ = zero == end_ ? end_ : zero + 1;
    return text;
}

std::string Input::rest() {
    std::string text(data_, end_);
    data_ = end_;
    return text;
}

}  // namespace tkv::fuzz

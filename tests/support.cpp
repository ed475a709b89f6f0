#include "support.h"

#include <fstream>
#include <regex>

#include "graphics/formats.h"
#include "system/files.h"
#include "system/verbose.h"

namespace tkv::test {

TempFolder::TempFolder() {
    // Not $TMPDIR: commands take the path without quotes.
    std::string pattern = "/tmp/tkv-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = fs::canonical(pattern);
}

TempFolder::~TempFolder() {
    fs::remove_all(path_);
}

std::string TempFolder::write(const std::string& name, const std::string& content) const {
    const std::string target = file(name);
    fs::create_directories(fs::path(target).parent_path());
    std::ofstream(target, std::ios::binary) << content;
    return target;
}

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Strings namesIn(const std::string& folder) {
    return folderNames(folder).value_or(Strings{});
}

static std::string withoutLogPrefixes(const std::string& lines) {
    static const std::regex prefix(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} tkvDvdMenuImg\[\d+:1\] )");
    return std::regex_replace(lines, prefix, "");
}

std::string errorsOf(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return withoutLogPrefixes(testing::internal::GetCapturedStderr());
}

std::string verboseErrorsOf(const std::function<void()>& action) {
    setVerbose(1);
    std::string text = errorsOf(action);
    setVerbose(0);
    return text;
}

void PrintTo(const Rgba& color, std::ostream* out) {
    *out << fmt::format("rgba({}, {}, {}, {})", color.red, color.green, color.blue, color.alpha);
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

static int difference(const Rgba& a, const Rgba& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green),
                     std::abs(a.blue - b.blue), std::abs(a.alpha - b.alpha)});
}

testing::AssertionResult near(const Rgba& a, const Rgba& b, int tolerance) {
    const bool isNear = difference(a, b) <= tolerance;
    return testing::AssertionResult(isNear)
           << testing::PrintToString(a) << " beside " << testing::PrintToString(b);
}

int worstDifference(const Bitmap& a, const Bitmap& b) {
    int worst = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            worst = std::max(worst, difference(pixel(a, x, y), pixel(b, x, y)));
    }
    return worst;
}

Bitmap painted(PixelSize size, const std::function<Rgba(int x, int y)>& paint) {
    Bitmap bitmap = Bitmap::create(size).value();
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const Rgba color = paint(x, y);
            const auto alpha = static_cast<std::uint32_t>(color.alpha);
            std::uint32_t word = alpha;
            for (const int channel : {color.red, color.green, color.blue})
                word = word << 8U | (static_cast<std::uint32_t>(channel) * alpha + 127) / 255;
            bitmap.row(y)[x] = word;
        }
    }
    return bitmap;
}

Bitmap painted(PixelSize size, const Rgba& color) {
    return painted(size, [&](int, int) { return color; });
}

std::string run(const std::string& command) {
    FILE* const pipe = popen(("export LC_ALL=C.UTF-8; exec 2>&1; " + command).c_str(), "r");
    std::string output;
    for (int byte = 0; (byte = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(byte);
    EXPECT_EQ(pclose(pipe), 0) << command << "\n" << output;
    return output;
}

std::string quoted(const std::string& text) {
    return fmt::format("'{}'", std::regex_replace(text, std::regex("'"), "'\\''"));
}

std::string magick() {
    return "$(command -v magick || command -v convert) ";
}

std::string checkoutPath(const std::string& name) {
    return TKV_CHECKOUT "/" + name;
}

static fs::path programFolder() {
    return fs::canonical("/proc/self/exe").parent_path();
}

std::string toolPath() {
    return programFolder() / "tkvDvdMenuImg";
}

std::string discProgramPath() {
    return programFolder() / "tkvDvdDisc";
}

static bool isRenewing() {
    return std::getenv("TKV_RENEW") != nullptr;
}

static std::string transcriptPath(const std::string& name) {
    return checkoutPath("tests/transcripts/" + name);
}

void expectText(const std::string& actual, const std::string& name) {
    if (isRenewing()) {
        std::ofstream(transcriptPath(name)) << actual;
    } else if (actual != readText(transcriptPath(name))) {
        const TempFolder kept;
        ADD_FAILURE() << run(fmt::format("diff -u {} {} || true", quoted(transcriptPath(name)),
                                         kept.write(name, actual)));
    }
}

void expectTranscript(const TempFolder& folder, const std::string& name) {
    const std::string transcript = transcriptPath(name);
    const std::string written = withoutLogPrefixes(run(fmt::format(
        "cd {} && PATH={}:\"$PATH\" && sed -n 's/^\\$ //p' {} | while read -r command; do "
        "printf '$ %s\\n' \"$command\"; eval \"$command\" </dev/null; done",
        folder.path(), quoted(programFolder()), quoted(transcript))));
    expectText(std::regex_replace(written, std::regex(folder.path()), "/folder"), name);
}

/// Its pixels tell how far those of the two are apart, tenfold.
static Bitmap differenceOf(const Bitmap& a, const Bitmap& b) {
    return painted(a.size(), [&](int x, int y) {
        const int apart = std::min(255, 10 * difference(pixel(a, x, y), pixel(b, x, y)));
        return Rgba{apart, apart, apart, 255};
    });
}

void expectGolden(const Bitmap& actual, const std::string& name) {
    const auto write = [](const fs::path& path, const Bitmap& bitmap) {
        fs::create_directories(path.parent_path());
        EXPECT_TRUE(writeFile(path, encodePicture(bitmap, "png", 1).value())) << path;
    };
    const std::string golden = checkoutPath("tests/golden/" + name);
    if (isRenewing()) return write(golden, actual);
    const std::optional<Bitmap> expected = decodePicture(golden);
    ASSERT_TRUE(expected && expected->size() == actual.size()) << golden;
    int strange = 0;
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x)
            strange += difference(pixel(actual, x, y), pixel(*expected, x, y)) > 8 ? 1 : 0;
    }
    if (strange <= actual.width() * actual.height() / 5000) return;
    const fs::path folder = programFolder().parent_path() / "golden" / name;
    write(folder / "expected.png", *expected);
    write(folder / "actual.png", actual);
    write(folder / "difference.png", differenceOf(actual, *expected));
    ADD_FAILURE() << strange << " pixels differ; see " << folder;
}

}  // namespace tkv::test

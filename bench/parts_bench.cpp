// Times the stages of a run of the tool, each alone: decode, scale, text, a pass of the renderer,
// encode, frame copy.

// libjpeg's header expects this one before it.
#include <cstdio>

#include <jpeglib.h>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <span>
#include <stdexcept>
#include <string>

#include "composer/page_composer.h"
#include "composer/page_geometry.h"
#include "composer/page_renderer.h"
#include "composer/page_texts.h"
#include "graphics/codecs/codecs.h"
#include "graphics/drawing.h"
#include "graphics/formats.h"
#include "graphics/text.h"
#include "system/files.h"

namespace {

using namespace tkv;

constexpr PixelSize kThumbnail{160, 120};
constexpr PixelSize kPage{kPageWidth, kPageHeight};
constexpr PixelSize kPhoto{4000, 3000};  // 12 megapixels.

template <typename Value>
Value must(std::optional<Value> value) {
    if (!value) throw std::runtime_error("an input could not be made");
    return *std::move(value);
}

std::string media(const std::string& name) {
    return TKV_MEDIA "/" + name;
}

Rect all(PixelSize size) {
    return {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
}

void scale(Bitmap& target, const Bitmap& picture) {
    if (!drawPicture(target, picture, {}, all(target.size()), Compositing::sourceOver, 1.0))
        abort();
}

/// A painted picture upscaled to the size of a photograph, with its grain.
Bitmap photo() {
    const Bitmap small = must(decodePicture(media("background.jpg")));
    Bitmap large = must(Bitmap::create(kPhoto));
    scale(large, small);
    std::minstd_rand random(1);
    const auto grainy = [&](std::uint32_t channel) {
        const int value = static_cast<int>(channel & 0xFFU) + static_cast<int>(random() % 13) - 6;
        return static_cast<std::uint32_t>(std::clamp(value, 0, 255));
    };
    for (int y = 0; y < large.height(); ++y) {
        for (std::uint32_t& pixel : std::span(large.row(y), std::size_t{kPhoto.width})) {
            pixel = 0xFF000000U | grainy(pixel >> 16U) << 16U | grainy(pixel >> 8U) << 8U |
                    grainy(pixel);
        }
    }
    return large;
}

/// The same coefficients as a progressive JPEG, which the tool's own encoder never writes.
Bytes progressive(const Bytes& baseline) {
    jpeg_error_mgr errors;
    jpeg_decompress_struct from;
    jpeg_compress_struct to;
    from.err = to.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&from);
    jpeg_create_compress(&to);
    jpeg_mem_src(&from, baseline.data(), baseline.size());
    jpeg_read_header(&from, TRUE);
    jvirt_barray_ptr* coefficients = jpeg_read_coefficients(&from);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&to, &data, &size);
    jpeg_copy_critical_parameters(&from, &to);
    jpeg_simple_progression(&to);
    jpeg_write_coefficients(&to, coefficients);
    jpeg_finish_compress(&to);
    Bytes bytes(data, data + size);
    jpeg_destroy_compress(&to);
    jpeg_destroy_decompress(&from);
    std::free(data);
    return bytes;
}

const Bytes& videoFrame() {
    static const Bytes bytes = must(readFile(media("harbour.jpg")));
    return bytes;
}

const Bytes& baselinePhoto() {
    static const Bytes bytes = must(encodeJpeg(photo(), 0.9F));
    return bytes;
}

const Bytes& progressivePhoto() {
    static const Bytes bytes = progressive(baselinePhoto());
    return bytes;
}

/// The page of nine stills with all its texts, drawn and redrawn by one renderer.
class NineStills {
  public:
    NineStills()
        : page_(must(PageComposer(request_, {media("background.jpg")}).composePass(0)).page) {}

    Bitmap draw() { return must(renderer_.render(page_)); }

  private:
    static MenuRequest request() {
        MenuRequest request;
        request.title = "Chapitres";
        request.dvdBt_menuPrev = "Retour";
        request.dvdBt_menuMain = "Menu principal";
        request.dvdBt_menuNext = "Suite";
        request.thumbs.emplace();
        for (const char* name :
             {"sailing/000.jpg", "harbour.jpg", "lighthouse/000.jpg", "forest.jpg", "wheel/000.jpg",
              "city.jpg", "train/000.jpg", "desert.jpg", "snow.jpg"}) {
            request.thumbs->push_back(media(name));
        }
        request.captions.emplace(request.thumbs->size(), "la grande roue");
        return request;
    }

    MenuRequest request_ = request();
    Page page_;
    PageRenderer renderer_;
};

/// A folder that goes with the program.
class TempFolder {
  public:
    TempFolder() {
        if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    std::string file(const char* name) const { return path_ + "/" + name; }

  private:
    std::string path_ = std::filesystem::temp_directory_path() / "tkv-bench-XXXXXX";
};

void text(benchmark::State& state) {
    const TextLayer title = titleText("CHAPITRES");
    for (auto _ : state) {
        benchmark::DoNotOptimize(rasterizeText(title.text, title.attributes, title.place, kPage));
    }
}

void decode(benchmark::State& state, const Bytes& (*file)(), PixelSize shown) {
    const Bytes& bytes = file();
    for (auto _ : state) {
        benchmark::DoNotOptimize(decodeJpeg(bytes, [=](PixelSize) { return shown; }));
    }
}

void scaling(benchmark::State& state, const Bytes& (*file)(), PixelSize shown) {
    const Bitmap picture = must(decodeJpeg(file(), [=](PixelSize) { return shown; }));
    Bitmap target = must(Bitmap::create(shown));
    for (auto _ : state)
        scale(target, picture);
}

void preparedPass(benchmark::State& state) {
    NineStills page;
    page.draw();
    for (auto _ : state)
        benchmark::DoNotOptimize(page.draw());
}

void encodePage(benchmark::State& state) {
    const Bitmap page = NineStills().draw();
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeJpeg(page, 0.9F));
}

void encodeOneColour(benchmark::State& state) {
    const PixelSize raster{kPageWidth, kPalRasterHeight};
    Bitmap picture = must(Bitmap::create(raster));
    if (!fillRect(picture, all(raster), withAlpha(kOrange, 0.3F))) abort();
    for (auto _ : state)
        benchmark::DoNotOptimize(encodePng(picture));
}

void frameCopy(benchmark::State& state) {
    const TempFolder folder;
    writeFile(folder.file("from.jpg"), must(encodeJpeg(NineStills().draw(), 0.9F)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(copyFile(folder.file("from.jpg"), folder.file("to.jpg")));
    }
}

// The first text of a process initialises the fonts. It can be timed once, before any other.
BENCHMARK(text)->Name("text/first")->Iterations(1)->Repetitions(1)->Unit(benchmark::kMillisecond);
BENCHMARK(text)->Name("text/later")->Unit(benchmark::kMicrosecond);
#define TKV_BENCH(function, ...) \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMicrosecond)
TKV_BENCH(decode, frame_thumbnail, videoFrame, kThumbnail);
TKV_BENCH(decode, photo_thumbnail, baselinePhoto, kThumbnail);
TKV_BENCH(decode, photo_page, baselinePhoto, kPage);
TKV_BENCH(decode, progressive_photo_thumbnail, progressivePhoto, kThumbnail);
TKV_BENCH(decode, progressive_photo_page, progressivePhoto, kPage);
TKV_BENCH(scaling, frame_thumbnail, videoFrame, kThumbnail);
TKV_BENCH(scaling, photo_page, baselinePhoto, kPage);
BENCHMARK(preparedPass)->Unit(benchmark::kMicrosecond);
BENCHMARK(encodePage)->Unit(benchmark::kMicrosecond);
BENCHMARK(encodeOneColour)->Unit(benchmark::kMicrosecond);
BENCHMARK(frameCopy)->Unit(benchmark::kMicrosecond);

}  // namespace

// The codec floor of a menu page, a lower bound: each distinct input decoded once, each distinct
// page encoded once, all files written, and nothing else. No text, no filter, no blending; the
// decoded pixels are copied to the page only so that the encoder gets content like that of a real
// one.
//
//   codec_floor OUTPUT FRAMES WIDTHxHEIGHT INPUT...
//
// OUTPUT: an existing folder; it gets FRAMES files of WIDTHxHEIGHT pages. INPUT: WxH+X+Y=PATH, a
// JPEG file or a folder of them that is shown W x H pixels large, X and Y from the page's top left;
// the first one is the background. There are as many distinct pages as the longest folder has
// files; later frames repeat them.

// libjpeg's header expects this one before it.
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
using Bytes = std::vector<unsigned char>;

struct Page {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<std::uint32_t> pixels;
};

struct Input {
    unsigned width = 0;
    unsigned height = 0;
    unsigned left = 0;
    unsigned top = 0;
    bool isBackground = false;
    std::vector<fs::path> files;
};

struct CodecMemory {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    ~CodecMemory() { std::free(data); }
};

File open(const fs::path& path, const char* mode) {
    File file(std::fopen(path.c_str(), mode), std::fclose);
    if (!file) throw std::runtime_error("cannot open " + path.string());
    return file;
}

Bytes read(const fs::path& path) {
    Bytes bytes(fs::file_size(path));
    if (std::fread(bytes.data(), 1, bytes.size(), open(path, "rb").get()) != bytes.size()) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return bytes;
}

void write(const fs::path& path, const CodecMemory& bytes) {
    if (std::fwrite(bytes.data, 1, bytes.size, open(path, "wb").get()) != bytes.size) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

/// The smallest scale, in eighths, at which a side is not below the shown one.
unsigned eighths(unsigned full, unsigned shown) {
    unsigned result = 1;
    while (result < 8 && (full * result + 7) / 8 < shown)
        ++result;
    return result;
}

/// Five eighths of each channel: a page shows its background at 60 %, and a brighter one would cost
/// the encoder more.
std::uint32_t dimmed(std::uint32_t pixel) {
    return (pixel >> 1U & 0x7F7F7F7FU) + (pixel >> 3U & 0x1F1F1F1FU);
}

/// Decodes at the smallest sufficient scale and copies what fits to the page.
void decode(const Bytes& file, const Input& input, Page& page) {
    jpeg_error_mgr errors;
    jpeg_decompress_struct codec;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, file.data(), file.size());
    jpeg_read_header(&codec, TRUE);
    codec.scale_num = std::max(eighths(codec.image_width, input.width),
                               eighths(codec.image_height, input.height));
    codec.scale_denom = 8;
    codec.out_color_space = JCS_EXT_BGRX;
    jpeg_start_decompress(&codec);
    std::vector<std::uint32_t> row(codec.output_width);
    const unsigned width = std::min({input.width, codec.output_width, page.width - input.left});
    const unsigned height = std::min(input.height, page.height - input.top);
    while (codec.output_scanline < codec.output_height) {
        const unsigned y = codec.output_scanline;
        auto* samples = reinterpret_cast<JSAMPROW>(row.data());
        jpeg_read_scanlines(&codec, &samples, 1);
        if (y < height) {
            std::uint32_t* to = &page.pixels[std::size_t{input.top + y} * page.width + input.left];
            if (input.isBackground) {
                std::transform(row.data(), row.data() + width, to, dimmed);
            } else {
                std::copy_n(row.data(), width, to);
            }
        }
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
}

/// Quality 90; libjpeg's defaults are 4:2:0 and the standard Huffman tables.
void encode(Page& page, CodecMemory& bytes) {
    jpeg_error_mgr errors;
    jpeg_compress_struct codec;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    jpeg_mem_dest(&codec, &bytes.data, &bytes.size);
    codec.image_width = page.width;
    codec.image_height = page.height;
    codec.input_components = 4;
    codec.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, 90, TRUE);
    jpeg_start_compress(&codec, TRUE);
    while (codec.next_scanline < page.height) {
        auto* row =
            reinterpret_cast<JSAMPROW>(&page.pixels[std::size_t{codec.next_scanline} * page.width]);
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
}

Input parseInput(const std::string& word) {
    Input input;
    int length = 0;
    if (std::sscanf(word.c_str(), "%ux%u+%u+%u=%n", &input.width, &input.height, &input.left,
                    &input.top, &length) != 4 ||
        length == 0) {
        throw std::runtime_error("not WxH+X+Y=PATH: " + word);
    }
    const fs::path path = word.substr(static_cast<std::size_t>(length));
    if (fs::is_directory(path)) {
        for (const auto& entry : fs::directory_iterator(path))
            input.files.push_back(entry.path());
        std::ranges::sort(input.files);
    } else {
        input.files.push_back(path);
    }
    return input;
}

void run(const std::vector<std::string>& words) {
    if (words.size() < 4) throw std::runtime_error("OUTPUT FRAMES WIDTHxHEIGHT INPUT...");
    const std::size_t frames = std::stoul(words[1]);
    Page page;
    if (std::sscanf(words[2].c_str(), "%ux%u", &page.width, &page.height) != 2) {
        throw std::runtime_error("not WIDTHxHEIGHT: " + words[2]);
    }
    page.pixels.resize(std::size_t{page.width} * page.height);
    std::vector<Input> inputs;
    std::size_t pages = 0;
    for (std::size_t i = 3; i < words.size(); ++i) {
        inputs.push_back(parseInput(words[i]));
        if (inputs.back().left > page.width || inputs.back().top > page.height) {
            throw std::runtime_error("not on the page: " + words[i]);
        }
        inputs.back().isBackground = i == 3;
        pages = std::max(pages, inputs.back().files.size());
    }
    for (std::size_t distinct = 0; distinct < std::min(pages, frames); ++distinct) {
        for (const Input& input : inputs) {
            if (distinct < input.files.size()) decode(read(input.files[distinct]), input, page);
        }
        CodecMemory bytes;
        encode(page, bytes);
        for (std::size_t frame = distinct; frame < frames; frame += pages) {
            char name[32];
            std::snprintf(name, sizeof name, "%03zu.jpg", frame);
            write(fs::path(words[0]) / name, bytes);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "codec_floor: %s\n", error.what());
        return 1;
    }
}

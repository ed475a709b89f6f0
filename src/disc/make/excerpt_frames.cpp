#include "disc/make/excerpt_frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

#include "disc/run/fault.h"
#include "graphics/formats.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Nothing of the pictures' colours is averaged once more: they lie on even rows and columns.
constexpr float kQuality = 0.93F;

// A second name for a file's bytes; a copy where the file system has no such names.
void linkOrCopy(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::create_hard_link(from, to, error);
    if (error) fs::copy_file(from, to);
}

std::uint32_t mixed(std::uint32_t a, std::uint32_t b, std::uint32_t part, std::uint32_t whole) {
    std::uint32_t pixel = 0;
    for (const unsigned shift : {0U, 8U, 16U, 24U}) {
        const std::uint32_t from = a >> shift & 255U, to = b >> shift & 255U;
        pixel |= ((from * (whole - part) + to * part + whole / 2) / whole) << shift;
    }
    return pixel;
}

// Turns `part` of `whole` of the picture into another of its size.
void mix(Bitmap& picture, const Bitmap& other, int part, int whole) {
    for (int y = 0; y < picture.height(); ++y) {
        std::uint32_t* const row = picture.row(y);
        const std::uint32_t* const from = other.row(y);
        for (int x = 0; x < picture.width(); ++x)
            row[x] = mixed(row[x], from[x], static_cast<std::uint32_t>(part),
                           static_cast<std::uint32_t>(whole));
    }
}

void copyInto(Bitmap& frame, const Bitmap& picture, int left, int top) {
    for (int y = 0; y < picture.height(); ++y)
        std::copy_n(picture.row(y), picture.width(), frame.row(top + y) + left);
}

// The blocks of a JPEG with colours of half the resolution, in rows and columns.
constexpr int kBlock = 16;

// Fills the blocks that the window's edge goes through.
void repeatEdges(Bitmap& frame, const Placement& window) {
    const auto begin = [](int edge) { return edge / kBlock * kBlock; };
    const auto end = [](int edge, int most) {
        return std::min(most, (edge + kBlock - 1) / kBlock * kBlock);
    };
    const int left = begin(window.x), right = end(window.x + window.width, frame.width());
    for (int y = window.y; y < window.y + window.height; ++y) {
        std::uint32_t* const row = frame.row(y);
        std::fill(row + left, row + window.x, row[window.x]);
        std::fill(row + window.x + window.width, row + right, row[window.x + window.width - 1]);
    }
    const int bottom = end(window.y + window.height, frame.height());
    for (int y = begin(window.y); y < bottom; ++y) {
        const int inside = std::clamp(y, window.y, window.y + window.height - 1);
        if (y != inside) std::copy_n(frame.row(inside), frame.width(), frame.row(y));
    }
}

// Makes one frame after another of the same excerpt.
class FrameWriter {
  public:
    FrameWriter(const FrameShape& shape, int lead, int frames, const Workshop& workshop)
        : shape_(shape), lead_(lead), frames_(frames), workshop_(workshop) {}

    void write(const std::vector<Pictures>& parts, int number, const std::string& path) const {
        if (shape_.isOnePicture() && !isTurning(number)) {
            linkOrCopy(workshop_.path(pictureName(parts.front(), number)), path);
            return;
        }
        if (shape_.isOnePicture()) {
            save(pictureOf(parts.front(), number), path);
            return;
        }
        std::optional<Bitmap> frame = Bitmap::create(shape_.frame);
        if (!frame) throw std::bad_alloc();
        int left = shape_.window.x;
        for (const Pictures& part : parts) {
            copyInto(*frame, pictureOf(part, number), left, shape_.window.y);
            left += shape_.picture().width;
        }
        repeatEdges(*frame, shape_.window);
        save(*frame, path);
    }

  private:
    bool isTurning(int number) const { return number >= frames_ - lead_; }

    const std::string& pictureName(const Pictures& part, int number) const {
        return part[static_cast<std::size_t>(lead_) + static_cast<std::size_t>(number)];
    }

    Bitmap load(const std::string& name) const {
        std::optional<Bitmap> picture = decodePicture(workshop_.path(name));
        if (!picture || picture->size() != shape_.picture())
            throw DiscError(fmt::format("The excerpt's picture {} cannot be read.", name));
        return *std::move(picture);
    }

    Bitmap pictureOf(const Pictures& part, int number) const {
        Bitmap picture = load(pictureName(part, number));
        if (isTurning(number)) {
            const int turned = number - (frames_ - lead_);
            mix(picture, load(part[static_cast<std::size_t>(turned)]), turned + 1, lead_ + 1);
        }
        return picture;
    }

    static void save(const Bitmap& frame, const std::string& path) {
        const std::optional<Bytes> file = encodePicture(frame, "jpg", kQuality);
        if (!file || !writeFile(path, *file))
            throw DiscError(fmt::format("{} cannot be written. Is the disk full?", path), path);
    }

    const FrameShape& shape_;
    int lead_, frames_;
    const Workshop& workshop_;
};

}  // namespace

std::string frameName(int number) {
    return fmt::format("{:06}.jpg", number);
}

void writeExcerpt(const std::vector<Pictures>& parts, const FrameShape& shape, int lead,
                  const std::string& folder, const Workshop& workshop) {
    const auto shortest = std::ranges::min(parts, {}, &Pictures::size).size();
    const int frames = static_cast<int>(shortest) - lead;
    if (frames < 1) throw DiscError("An excerpt has no pictures.");
    const FrameWriter writer(shape, lead, frames, workshop);
    for (int i = 0; i < frames; ++i) {
        if (workshop.tools().stop().isStopped()) throw Interrupted();
        writer.write(parts, i, workshop.path(joinPath(folder, frameName(i))));
    }
}

}  // namespace tkv::disc

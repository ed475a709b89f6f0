#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "graphics/bitmap.h"
#include "graphics/formats.h"

namespace tkv::test {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

/// An empty folder that goes, with all it holds, at the end of the scope.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(TempFolder&&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    /// Makes a file and its parent folders.
    std::string write(const std::string& name, const std::string& content) const;

  private:
    std::string path_;
};

/// Sets an environment variable for the scope.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before;
        setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
    ScopedVariable(ScopedVariable&&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

std::string readText(const std::string& path);

/// None when the folder cannot be listed.
Strings namesIn(const std::string& folder);

/// What `action` wrote to the standard error stream, log prefixes cut off.
std::string errorsOf(const std::function<void()>& action);
std::string verboseErrorsOf(const std::function<void()>& action);

struct Rgba {
    int red, green, blue, alpha;
    bool operator==(const Rgba&) const = default;
};
void PrintTo(const Rgba& color, std::ostream* out);

/// One pixel, not premultiplied; row 0 is the top.
Rgba pixel(const Bitmap& bitmap, int x, int y);

/// Whether no channel differs by more than `tolerance`.
testing::AssertionResult near(const Rgba& a, const Rgba& b, int tolerance);

/// The largest difference of any channel of any pixel, of bitmaps of one size.
int worstDifference(const Bitmap& a, const Bitmap& b);

/// A bitmap whose pixels `paint(x, y)` answers (row 0 the top).
Bitmap painted(PixelSize size, const std::function<Rgba(int x, int y)>& paint);
Bitmap painted(PixelSize size, const Rgba& color);

/// What a line for the shell, which must succeed, writes to its two output streams, in English.
std::string run(const std::string& command);

/// The text as one word for the shell.
std::string quoted(const std::string& text);

/// ImageMagick's program, whose name differs between its versions.
std::string magick();

/// A file or folder of the checkout.
std::string checkoutPath(const std::string& name);

/// The programs, built beside the tests.
std::string toolPath();
std::string discProgramPath();

/// Expects the text of the file `name` of the folder "transcripts". While $TKV_RENEW is set the
/// file is written instead.
void expectText(const std::string& actual, const std::string& name);

/// Runs the commands of a file of the folder "transcripts" (its lines that begin with a dollar sign
/// and a blank) in `folder`, and expects that they write the rest of that file. Log prefixes are
/// cut off, and the folder is called "/folder". While $TKV_RENEW is set the file is written
/// instead.
void expectTranscript(const TempFolder& folder, const std::string& name);

/// Expects the bitmap to look like the picture `name` of the folder "golden": no more than 0.02 %
/// of the pixels may differ by more than 8 levels. If it does not, expected, actual and difference
/// are left as pictures. While $TKV_RENEW is set the picture is written instead.
void expectGolden(const Bitmap& actual, const std::string& name);

}  // namespace tkv::test

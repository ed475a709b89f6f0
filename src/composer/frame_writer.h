#pragma once

#include <functional>
#include <map>
#include <string>

#include "composer/page.h"
#include "system/files.h"

namespace tkv {

/// Whether a page equal to an earlier one is drawn again or its file copied: the files are the
/// same.
enum class EqualPages { copied, drawnAgain };

/// Draws a page into a file; true when a file is at the path afterwards. `isWritten` (false before)
/// gets whether that is the page: a file that could not be overwritten is still there.
using PageWriter = std::function<bool(const Page& page, const std::string& path, bool* isWritten)>;

/// Writes the frames of a menu into its output folder.
class FrameWriter {
  public:
    /// `draw`: called for each page whose file is not copied.
    FrameWriter(std::string folder, EqualPages equalPages, PageWriter draw);

    /// Frame `number`, from 0: "000.jpg" and so on. A failure is only logged.
    void write(const Page& page, int number);

  private:
    // A frame's file as it was written; a later frame may have the same file by another name.
    struct Frame {
        std::string path;
        FileStamp stamp;
        bool isUnchanged() const { return fileStamp(path) == stamp; }
    };

    bool writeFile(const Page& page, const std::string& path);
    void forgetFilesOf(const FileStamp& written);

    std::string folder_;
    EqualPages equalPages_;
    PageWriter draw_;
    std::map<Page, Frame> firstFrames_;
};

}  // namespace tkv

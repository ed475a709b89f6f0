#pragma once

#include <string>

namespace tkv {

/// The folder of the files that belong to the running program.
std::string resourceFolder();

/// The same for any program's executable, at an absolute path without links: the resources of the
/// application bundle that holds it ("…/Contents/MacOS/tool"), or else the "share/tkvDvdMenuImg"
/// beside the executable's folder, both in an installation and in the build tree.
std::string resourceFolder(const std::string& executable);

/// The name of the application that this program serves, chosen when it was built.
std::string hostName();

}  // namespace tkv

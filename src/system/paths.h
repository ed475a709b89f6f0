#pragma once

#include <string>
#include <string_view>
#include <vector>

// Paths as plain strings of any bytes; nothing here accesses the disk.

namespace tkv {

/// The user's home folder: $HOME, or what the user database says.
std::string homeFolder();

/// The user's login name.
std::string loginName();

/// The home folders of all accounts of the user database.
std::vector<std::string> accountHomes();

/// The path with a leading "~" or "~user" replaced by that home folder; an unknown user leaves it
/// unchanged.
std::string expandTilde(std::string_view path);

/// `name` below `folder`, with one slash between them; just `name` when `folder` is empty.
std::string joinPath(std::string_view folder, std::string_view name);

/// The path without its last component: "/a/b" and "/a/b/" give "/a", "/a" gives "/", "a" gives "".
std::string parentFolder(std::string_view path);

/// The last component, without trailing slashes; "/" for the root.
std::string lastComponent(std::string_view path);

/// What follows the last dot of the last component, without the dot; empty when there is none or
/// the name only begins with it (".profile").
std::string pathExtension(std::string_view path);

/// The path without that extension and its dot, and without trailing slashes.
std::string withoutExtension(std::string_view path);

/// `text` with its ASCII letters lower-cased, as extensions are compared.
std::string asciiLowered(std::string_view text);

}  // namespace tkv

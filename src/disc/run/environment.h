#pragma once

#include <string>
#include <vector>

// What this process was started with, and what counts for all of it.

namespace tkv::disc {

/// The absolute path of the current folder; empty when it is gone.
std::string currentFolder();

/// The language of the user's messages, as a locale: the first of LC_ALL, LC_MESSAGES and LANG
/// that is set and not empty.
std::string userLanguage();

/// What the user prints on.
enum class Paper { a4, letter };

/// The paper that $PAPERSIZE, /etc/papersize or else the user's locale names; A4 by default.
Paper userPaper();

/// The user's folders for downloads, videos and the like, by the paths that the desktop has given
/// them in the user's language, the home and that for temporary files.
std::vector<std::string> plainFolders();

/// Has dates written in another language, and Chinese characters in the shapes that it prefers.
/// Counts for the whole process and the programs that it starts; to be called before there is
/// another thread. `language`: two letters of ISO 639-1.
void useLanguage(const std::string& language);

/// Whether the terminal, as $TERM names it, moves its cursor when it is told to.
bool movesCursor();

/// The absolute path of the program of this name that $PATH leads to; empty when there is none.
std::string programPath(const std::string& program);

/// The same of a program of ours, which may stand beside this one, too; that counts more.
std::string programBeside(const std::string& program);

}  // namespace tkv::disc

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "disc/run/own_folder.h"
#include "disc/run/result_records.h"
#include "disc/run/tools.h"

namespace tkv::disc {

/// How damaged results are found.
struct ResultCheck {
    bool readsAll = false;  ///< compares the bytes of large ones, too, not only how many there are
    std::function<void(std::string_view line)> say;  ///< is told of each
};

/// A cache of what has been made, from run to run, in a folder of its own. A result is addressed by
/// a hash of its inputs, so it is there or not, and never stale. May be used from several threads,
/// which make different results.
///
/// Of each result it is recorded what it consists of: one that is not that any more, since a disk
/// was full, the power went or somebody changed it, is not used.
///
/// Names of results, and of what is unfinished, are relative to the folder, where the workshop's
/// programs run; whoever opens one takes its path().
class Workshop {
  public:
    /// Makes the folder, or takes one that is a workshop already, and removes what an earlier run
    /// left unfinished, as it does at its end with what this one did. Throws DiscError for a folder
    /// that holds anything else. `folder`: absolute. `stop`: of its programs; must outlive it.
    /// `check`: must outlive it.
    Workshop(std::string folder, ProgramStop& stop, ResultCheck check = {});
    ~Workshop();
    Workshop(Workshop&&) = delete;

    const Tools& tools() const { return tools_; }

    /// The name of a file for the lines of others; it is kept.
    static constexpr const char* kLog = "composer.log";

    /// The absolute path of a name; of the folder itself for an empty one.
    std::string path(std::string_view name) const;

    /// The name of a result. `kind` and `extension` (with its dot, or empty for a folder) make it
    /// readable; `inputs`: all that it depends on.
    static std::string nameOf(std::string_view kind, std::string_view extension,
                              const std::vector<std::string>& inputs);

    /// Whether the result is there from an earlier run; it is kept then. One that is damaged is
    /// removed and told of.
    bool has(const std::string& name);

    /// Makes the result unless it is there: `make` writes it under the name that it is given, and
    /// it takes its own name when that returns. Returns `name`.
    std::string result(const std::string& name,
                       const std::function<void(const std::string& unfinished)>& make);

    /// Where something may be written before it becomes a result, or that is of no use later.
    static std::string unfinished(const std::string& name);

    /// Makes a folder there, and returns its name.
    std::string newFolder(const std::string& name) const;

    /// Gives what was written to unfinished(name) its name, when it is on the disk. Throws
    /// DiscError when it cannot be written.
    void finish(const std::string& name);

    /// A mutex for each name: results that are made from one source are made by one thread, and the
    /// other finds them.
    class Lock {
      public:
        Lock(Workshop& workshop, const std::string& name);
        ~Lock();
        Lock(Lock&&) = delete;

      private:
        Workshop& workshop_;
        std::string name_;
    };

    /// Removes all results that this run has not asked for, and nothing that is no result.
    void removeUnused() const;

    /// Removes everything that is the workshop's, and the folder unless others have put something
    /// there. Nothing can be made in it any more.
    void removeAll() const;

  private:
    bool isWhole(const std::string& name);

    OwnFolder folder_;
    Tools tools_;
    ResultCheck check_;
    ResultRecords records_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<std::string> locks_;
    std::set<std::string> used_;
};

}  // namespace tkv::disc

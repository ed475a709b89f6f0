#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tkv::disc {

/// Keeps what has been made, from run to run, in the current folder. A result is named after all
/// that it is made from, so that it is there or not, and never stale. May be used from several
/// threads, which make different results.
class Workshop {
  public:
    /// Removes what an earlier run left unfinished, and at its end what this one did.
    Workshop();
    ~Workshop();
    Workshop(Workshop&&) = delete;

    /// The name of a result. `kind` and `extension` (with its dot, or empty for a folder) make it
    /// readable; `inputs` are all words that it depends on.
    static std::string nameOf(std::string_view kind, std::string_view extension,
                              const std::vector<std::string>& inputs);

    /// Whether the result is there from an earlier run; it is kept then.
    bool has(const std::string& name);

    /// Makes the result unless it is there: `make` writes it to the path that it is given, and the
    /// result takes its name when that returns. Answers `name`.
    std::string result(const std::string& name,
                       const std::function<void(const std::string& path)>& make);

    /// Where something may be written before it becomes a result, or that is of no use later.
    static std::string unfinished(const std::string& name);

    /// Gives what was written to unfinished(name) its name.
    void finish(const std::string& name);

    /// While it lives, no other thread has a turn of the same name: results that are made from one
    /// source are made by one thread, and the other finds them.
    class Turn {
      public:
        Turn(Workshop& workshop, const std::string& name);
        ~Turn();
        Turn(Turn&&) = delete;

      private:
        Workshop& workshop_;
        std::string name_;
    };

    /// Removes all results that this run has not asked for.
    void removeUnused() const;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<std::string> turns_;
    std::set<std::string> used_;
};

}  // namespace tkv::disc

#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tkv::disc {

/// Why there will be no disc, or none with a film.
struct Fault {
    std::string about;  ///< the path of a film or file, or a setting ("--music"); empty: neither
    std::string words;  ///< a sentence or two: what is wrong, the cause, and what to do about it
    bool operator==(const Fault&) const = default;
};

/// Ends a run with faults.
class DiscError : public std::runtime_error {
  public:
    /// `about`: as Fault has it.
    explicit DiscError(const std::string& words, std::string about = {})
        : std::runtime_error(words), faults_{{std::move(about), words}} {}

    /// `faults`: at least one.
    explicit DiscError(std::vector<Fault> faults)
        : std::runtime_error(faults.front().words), faults_(std::move(faults)) {}

    const std::vector<Fault>& faults() const { return faults_; }

  private:
    std::vector<Fault> faults_;
};

/// Does something, and returns the first of the faults that it throws; none when all is well.
std::optional<Fault> faultOf(const std::function<void()>& action);

/// Throws DiscError: that the file or folder cannot be `what` ("written"), and why, as errno has
/// it.
[[noreturn]] void failOn(const std::string& path, std::string_view what);

/// Ends a run because a file is no film at all.
class NoFilm : public DiscError {
  public:
    enum class Kind { other, playlist };
    NoFilm(const std::string& words, std::string about, Kind kind = Kind::other)
        : DiscError(words, std::move(about)), kind_(kind) {}

    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Thrown where a run that is asked to stop notices it.
class Interrupted {};

}  // namespace tkv::disc

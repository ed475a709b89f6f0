#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tkv::disc {

/// Makes pieces of a disc side by side, in their order, while somebody else goes on with those that
/// are ready. ffmpeg keeps less than two processors busy with one film.
class Lanes {
  public:
    /// Makes pieces 0 to `count` - 1: `make` answers a piece's name. Called in several threads.
    Lanes(std::size_t count, std::function<std::string(std::size_t)> make);

    /// Stops the programs of those that are not ready.
    ~Lanes();
    Lanes(Lanes&&) = delete;

    /// The name of a piece, as soon as it is ready. Throws what has ended any piece.
    std::string wait(std::size_t piece);

    /// How many pieces are ready.
    std::size_t ready();

    /// Throws what has ended a piece, if something has.
    void rethrow();

  private:
    void work();

    std::function<std::string(std::size_t)> make_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::optional<std::string>> names_;
    std::exception_ptr error_;
    std::vector<std::jthread> threads_;
};

/// Does `count` things side by side, and returns when all are done. Throws what has ended one.
void sideBySide(std::size_t count, const std::function<void(std::size_t)>& action);

}  // namespace tkv::disc

#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace tkv::disc {

/// Tells on the standard error stream how far the work is: on a terminal in one line that changes,
/// elsewhere in plain lines. May be used from several threads.
class Progress {
  public:
    enum class Style { terminal, plain, quiet };
    explicit Progress(Style style);
    ~Progress();
    Progress(Progress&&) = delete;

    /// The style that suits where the standard error stream leads.
    static Style suitableStyle();

    /// Writes a line that stays; not when quiet.
    void say(std::string_view line);

    /// Takes the line that changes off the terminal, before something else is written there.
    void clear();

    /// Work of `weight` is to come; a negative one has turned out to be done already. Weights are
    /// seconds as they would be on some machine.
    void expect(double weight);

    /// One piece of that work, from here to the end of its life.
    class Task {
      public:
        /// `what`: "Encoding beach.mp4"
        Task(Progress& progress, std::string what, double weight);
        ~Task();
        Task(Task&&) = delete;

        /// How much of the task is done, from 0 to 1.
        void reach(double fraction);

      private:
        Progress& progress_;
        std::string what_;
        double weight_;
        double done_ = 0;
    };

  private:
    using Clock = std::chrono::steady_clock;

    void show(const std::string& what, bool isNew);
    std::string howFar() const;

    const Style style_;
    std::mutex mutex_;
    double expected_ = 0;
    double done_ = 0;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point shown_;
};

}  // namespace tkv::disc

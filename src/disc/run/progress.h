#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tkv::disc {

/// How far a run is.
struct ProgressState {
    double part = 0;                    ///< of the whole work, from 0 to 1
    std::optional<double> secondsLeft;  ///< as far as can be told
    std::string task;                   ///< that it is about: "Encoding beach.mp4"
    bool isNewTask = false;             ///< has it just begun?
};

/// Is told how a run goes on. Called from several threads, by one at a time.
class ProgressReceiver {
  public:
    ProgressReceiver() = default;
    ProgressReceiver(ProgressReceiver&&) = delete;
    virtual ~ProgressReceiver() = default;

    /// A line that stays.
    virtual void say(std::string_view line) = 0;

    /// A line of what was made at last.
    virtual void tellResult(std::string_view line) = 0;

    /// Where the run is now; may come often.
    virtual void show(const ProgressState& state) = 0;
};

/// Adds up how far the work is. May be used from several threads.
class Progress {
  public:
    /// `receiver`: must outlive it.
    explicit Progress(ProgressReceiver& receiver) : receiver_(receiver) {}
    Progress(Progress&&) = delete;

    void say(std::string_view line);
    void tellResult(std::string_view line);

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

    void show(const std::string& task, bool isNew);

    ProgressReceiver& receiver_;
    std::mutex mutex_;
    double expected_ = 0;
    double done_ = 0;
    const Clock::time_point start_ = Clock::now();
};

}  // namespace tkv::disc

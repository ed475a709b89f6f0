#pragma once

#include <chrono>

#include "disc/run/progress.h"

namespace tkv::disc {

/// Tells how a run goes on, on the standard error stream: on a terminal in one line that changes,
/// elsewhere in plain lines. What was made comes on the standard output.
class TerminalProgress : public ProgressReceiver {
  public:
    enum class Style { terminal, plain, quiet };
    explicit TerminalProgress(Style style) : style_(style) {}
    ~TerminalProgress() override;
    TerminalProgress(TerminalProgress&&) = delete;

    /// The style that suits where the standard error stream leads.
    static Style suitableStyle();

    void say(std::string_view line) override;
    void tellResult(std::string_view line) override;
    void show(const ProgressState& state) override;

  private:
    using Clock = std::chrono::steady_clock;

    void clear() const;

    const Style style_;
    Clock::time_point shown_;
};

}  // namespace tkv::disc

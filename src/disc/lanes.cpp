#include "disc/lanes.h"

#include <algorithm>
#include <utility>

#include "system/processes.h"

namespace tkv::disc {

Lanes::Lanes(std::size_t count, std::function<std::string(std::size_t)> make)
    : make_(std::move(make)), names_(count) {
    const unsigned lanes = std::clamp(std::thread::hardware_concurrency() / 2 + 1, 2U, 4U);
    for (unsigned i = 0; i < lanes; ++i)
        threads_.emplace_back([this] { work(); });
}

Lanes::~Lanes() {
    const std::size_t count = names_.size();
    if (ready() < count) {
        next_ = count;
        stopPrograms();
    }
}

std::string Lanes::wait(std::size_t piece) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return names_[piece] || error_; });
    if (error_) std::rethrow_exception(error_);
    return *names_[piece];
}

std::size_t Lanes::ready() {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::ranges::count_if(names_, [](const auto& name) { return name.has_value(); }));
}

void Lanes::rethrow() {
    const std::lock_guard lock(mutex_);
    if (error_) std::rethrow_exception(error_);
}

void sideBySide(std::size_t count, const std::function<void(std::size_t)>& action) {
    Lanes lanes(count, [&](std::size_t i) {
        action(i);
        return std::string();
    });
    for (std::size_t i = 0; i < count; ++i)
        lanes.wait(i);
}

void Lanes::work() {
    for (std::size_t piece = 0; (piece = next_++) < names_.size();) {
        std::optional<std::string> name;
        std::exception_ptr error;
        try {
            name = make_(piece);
        } catch (...) {
            error = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        names_[piece] = std::move(name);
        if (error && !error_) {
            error_ = error;
            next_ = names_.size();
            stopPrograms();
        }
        changed_.notify_all();
    }
}

}  // namespace tkv::disc

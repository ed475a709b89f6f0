#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace tkv {

/// Owns an open file descriptor; a negative number is none.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        close();
        number_ = std::exchange(other.number_, -1);
        return *this;
    }

    int number() const { return number_; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

/// Repeats `transfer(done)`, which returns as read and write do, until `size` bytes are done, the
/// end of the file or an error; returns how many are done.
template <typename Transfer>
std::size_t transferAll(std::size_t size, Transfer transfer) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = transfer(done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

}  // namespace tkv

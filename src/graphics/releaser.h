#pragma once

namespace tkv {

/// The deleter of a std::unique_ptr that owns a C library's object: `release` is the function that
/// takes its pointer and frees it.
template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

}  // namespace tkv

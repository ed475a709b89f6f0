#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tkv::disc {

struct DecodedText {
    std::string text;     ///< UTF-8, without a byte order mark
    std::string guessed;  ///< the encoding, where nothing but the bytes tells it; mostly empty
};

/// A text of any encoding: that of its byte order mark, UTF-8 where it is valid, else what its
/// bytes look like; `language`, two letters, decides between encodings that are as likely. None
/// when it is in none that is known.
std::optional<DecodedText> decodedText(std::span<const std::uint8_t> bytes,
                                       const std::string& language);

}  // namespace tkv::disc

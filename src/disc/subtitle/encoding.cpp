#include "disc/subtitle/encoding.h"

#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "system/unicode.h"

namespace tkv::disc {

namespace {

struct ByteOrderMark {
    std::string_view bytes;
    const char* encoding;
};
// The longer ones first, since one begins with another.
constexpr std::array<ByteOrderMark, 5> kMarks{{
    {{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
    {{"\0\0\xFE\xFF", 4}, "UTF-32BE"},
    {"\xEF\xBB\xBF", "UTF-8"},
    {"\xFF\xFE", "UTF-16LE"},
    {"\xFE\xFF", "UTF-16BE"},
}};

// The encodings in which a language's texts were written, and the names by which the detector calls
// them.
struct Habit {
    std::string_view languages, encodings;
};
constexpr std::array<Habit, 11> kHabits{{
    {"cs hr hu pl ro sk sl bs sq sr", "windows-1250 ISO-8859-2"},
    {"be bg mk ru uk", "windows-1251 KOI8-R ISO-8859-5 IBM866"},
    {"el", "windows-1253 ISO-8859-7"},
    {"tr az", "windows-1254 ISO-8859-9"},
    {"he yi", "windows-1255 ISO-8859-8-I ISO-8859-8"},
    {"ar fa ur", "windows-1256 ISO-8859-6"},
    {"ja", "Shift_JIS EUC-JP ISO-2022-JP"},
    {"ko", "EUC-KR ISO-2022-KR"},
    {"zh", "GB18030 Big5 ISO-2022-CN"},
    {"ca da de en es eu fi fr ga gl is it nl nb nn no pt sv", "windows-1252 ISO-8859-1"},
    {"xx", ""},
}};

// Encodings that hold another, whose few more characters Windows has written.
struct Superset {
    std::string_view part;
    const char* whole;
};
constexpr std::array<Superset, 4> kSupersets{{
    {"ISO-8859-1", "windows-1252"},
    {"ISO-8859-9", "windows-1254"},
    {"ISO-8859-8-I", "windows-1255"},
    {"ISO-8859-8", "windows-1255"},
}};

bool isAmong(std::string_view words, std::string_view word) {
    for (std::size_t at = words.find(word); at != std::string_view::npos;
         at = words.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if ((at == 0 || words[at - 1] == ' ') && (end == words.size() || words[end] == ' '))
            return true;
    }
    return false;
}

std::string_view habitOf(const std::string& language) {
    for (const Habit& habit : kHabits) {
        if (isAmong(habit.languages, language)) return habit.encodings;
    }
    return {};
}

// Of a text of times and words, the lines that tell its encoding.
std::string tellingLines(std::string_view text) {
    std::string telling;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, end);
        if (std::ranges::any_of(line, [](char byte) { return (byte & 0x80) != 0; }))
            telling += line;
        text.remove_prefix(end);
    }
    return telling;
}

// The detector's best guess, unless another that is half as likely is a habit of the language.
std::string guessedEncoding(std::string_view text, const std::string& language) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&error),
                                                                              ucsdet_close);
    const std::string lines = tellingLines(text);
    ucsdet_setText(detector.get(), lines.data(), static_cast<std::int32_t>(lines.size()), &error);
    std::int32_t count = 0;
    const UCharsetMatch** const matches = ucsdet_detectAll(detector.get(), &count, &error);
    if (U_FAILURE(error) != 0) return {};
    const std::string_view habit = habitOf(language);
    std::string best;
    std::int32_t bestConfidence = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        std::string name = ucsdet_getName(matches[i], &error);
        const std::int32_t confidence = ucsdet_getConfidence(matches[i], &error);
        if (isAmong(habit, name) && confidence * 2 >= bestConfidence) return name;
        if (!best.empty()) continue;
        best = name;
        bestConfidence = confidence;
    }
    // Too short a text, or none of its language.
    if (bestConfidence < 10 && !habit.empty()) return std::string(habit.substr(0, habit.find(' ')));
    return best;
}

std::optional<std::string> converted(std::string_view text, const char* encoding) {
    UErrorCode error = U_ZERO_ERROR;
    // No encoding takes more bytes in UTF-8 than three for one.
    std::string utf8(3 * text.size() + 16, '\0');
    const std::int32_t length =
        ucnv_convert("UTF-8", encoding, utf8.data(), static_cast<std::int32_t>(utf8.size()),
                     text.data(), static_cast<std::int32_t>(text.size()), &error);
    if (U_FAILURE(error) != 0) return {};
    utf8.resize(static_cast<std::size_t>(length));
    return utf8;
}

// UTF-16 without a mark: of Latin letters and of times every other byte is 0.
const char* wideEncoding(std::string_view text) {
    std::array<std::size_t, 2> zeros{};
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\0') ++zeros[i % 2];
    if (zeros[0] + zeros[1] < text.size() / 8) return nullptr;
    return zeros[0] > zeros[1] ? "UTF-16BE" : "UTF-16LE";
}

}  // namespace

std::optional<DecodedText> decodedText(std::span<const std::uint8_t> bytes,
                                       const std::string& language) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto decoded = [](std::optional<std::string> utf8,
                            const std::string& guessed) -> std::optional<DecodedText> {
        if (!utf8) return {};
        return DecodedText{std::move(*utf8), guessed};
    };
    for (const ByteOrderMark& mark : kMarks) {
        if (text.starts_with(mark.bytes))
            return decoded(converted(text.substr(mark.bytes.size()), mark.encoding), "");
    }
    if (text.empty()) return DecodedText{};
    if (const char* const wide = wideEncoding(text)) return decoded(converted(text, wide), wide);
    if (isUtf8(text)) return DecodedText{std::string(text), ""};
    const std::string guessed = guessedEncoding(text, language);
    std::string encoding = guessed;
    for (const Superset& superset : kSupersets) {
        if (guessed == superset.part) encoding = superset.whole;
    }
    return decoded(converted(text, encoding.c_str()), encoding);
}

}  // namespace tkv::disc

#include <gtest/gtest.h>

#include "support.h"
#include "utils/numbers.h"

namespace tkv {
namespace {

TEST(Numbers, IntValueReadsLeniently) {
    const struct {
        const char* text;
        std::int32_t value;
    } cases[] = {{" \t-3 x", -3},
                 {"+7.9", 7},
                 {"- 5", 0},
                 {"abc", 0},
                 {"", 0},
                 {"0x10", 0},
                 {"99999999999", 2147483647}};
    for (const auto& c : cases)
        EXPECT_EQ(intValue(c.text), c.value) << c.text;
}

TEST(Numbers, RoundsToAMultiple) {
    const struct {
        std::int32_t value, multiple, rounded;
    } cases[] = {{7, 2, 8},   {6, 2, 6},   {9, 4, 8},  {10, 4, 12},
                 {11, 5, 10}, {12, 5, 15}, {-3, 2, -2}};
    for (const auto& c : cases) {
        const std::string line = "nbMultipleArrondi    :-) " + std::to_string(c.rounded) + "\n";
        EXPECT_EQ(
            test::errorsOf([&] { EXPECT_EQ(nbMultipleArrondi(c.value, c.multiple), c.rounded); }),
            c.value == c.rounded ? "" : line);
    }
    EXPECT_EQ(test::verboseErrorsOf([] { nbMultipleArrondi(7, 2); }),
              "arrondiInferieur     : 6\n"
              "nbMultipleArrondi    : arrondir au dessus\n"
              "nbMultipleArrondi    :-) 8\n");
}

TEST(Numbers, ReadsVersions) {
    const struct {
        const char* text;
        float value;
    } cases[] = {
        {"1.25", 1.25F}, {"version 0.7.2", 0.0702F}, {"2", 2.0F}, {"", 0.0F}, {"1..3.9", 1.0003F}};
    for (const auto& c : cases)
        EXPECT_FLOAT_EQ(floatFromString(c.text), c.value) << c.text;
    EXPECT_EQ(test::verboseErrorsOf([] { floatFromString("0.7.2"); }), "returnedFloat 0.070200\n");
}

TEST(Numbers, SplitsLines) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(linesOfText("a\n\nb\n"), (Lines{"a", "b"}));
    EXPECT_EQ(linesOfText("a\r\n \vé\u0085b\u2028c\u2029"), (Lines{"a", " ", "é", "b", "c"}));
    EXPECT_EQ(linesOfText("\n\r"), Lines{});
    EXPECT_EQ(linesOfText(std::nullopt), Lines{});
}

}  // namespace
}  // namespace tkv

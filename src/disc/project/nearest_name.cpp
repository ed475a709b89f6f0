#include "disc/project/nearest_name.h"

#include <algorithm>

namespace tkv::disc {

namespace {

// Letters that are missing, too many, others or swapped with their neighbour: the optimal string
// alignment distance.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> steps(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t changed = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({changed, steps[i - 1][j] + 1, steps[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps[a.size()][b.size()];
}

}  // namespace

std::string nearestName(std::string_view word, const std::vector<std::string>& names) {
    constexpr std::size_t kMostSteps = 2, kLongest = 64;
    std::string nearest;
    std::size_t least = std::min(kMostSteps + 1, (word.size() + 1) / 2);
    if (word.size() > kLongest) return nearest;
    for (const std::string& name : names) {
        const std::size_t steps = distance(word, name);
        if (steps >= least) continue;
        least = steps;
        nearest = name;
    }
    return nearest;
}

}  // namespace tkv::disc

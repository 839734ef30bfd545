// The distance of two words: how many slips lie between them, by the usual table of distances
// between all their beginnings. Tested by tests/unit/host/cli_usage_test.cpp.
#include "host/cli/suggestion.h"

#include <algorithm>

namespace host {
namespace {

size_t SlipsBetween(std::string_view left, std::string_view right) {
    std::vector<std::vector<size_t>> slips(left.size() + 1, std::vector<size_t>(right.size() + 1));
    for (size_t i = 0; i <= left.size(); ++i) {
        for (size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                slips[i][j] = i + j;
                continue;
            }
            const size_t other = left[i - 1] == right[j - 1] ? 0 : 1;
            slips[i][j] =
                std::min({slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + other});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
            }
        }
    }
    return slips[left.size()][right.size()];
}

}  // namespace

std::string NearestWord(std::string_view written, const std::vector<std::string>& known) {
    // More than a third of a word is no slip; a text of any length is not compared.
    constexpr size_t kLongest = 64;
    std::string nearest;
    size_t fewest =
        written.size() > kLongest ? 0 : std::min<size_t>(2, (written.size() + 1) / 3) + 1;
    for (const std::string& word : known) {
        if (fewest == 0) {
            break;
        }
        const size_t slips = SlipsBetween(written, word);
        if (slips < fewest) {
            fewest = slips;
            nearest = word;
        }
    }
    return nearest;
}

}  // namespace host

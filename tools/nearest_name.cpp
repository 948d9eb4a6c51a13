#include "tools/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

char lowered(char character) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

/// The least number of changes that make one word of the other: the optimal string alignment, by
/// rows of the prefixes of `a`.
std::size_t distanceOf(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    std::vector<std::size_t> last = row;
    std::vector<std::size_t> beforeLast = row;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool isSame = lowered(a[i - 1]) == lowered(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && lowered(a[i - 1]) == lowered(b[j - 2]) &&
                lowered(a[i - 2]) == lowered(b[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

std::optional<std::string> nearestName(std::string_view word, std::span<const std::string> names) {
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    std::optional<std::string> nearest;
    for (const std::string& name : names) {
        if (const std::size_t distance = distanceOf(word, name); distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

#include "tools/nearest_name.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

char lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

/// The least number of changes that make one word of the other: the optimal string alignment, by
/// rows of the prefixes of `a`.
std::size_t distanceOf(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
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
    return row[b.size()];
}

}  // namespace

std::optional<std::string> nearestName(std::string_view word, std::span<const std::string> names) {
    constexpr std::size_t longest = 100;  // no name has so many characters
    if (word.size() < 2 || word.size() > longest) {
        return std::nullopt;
    }
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

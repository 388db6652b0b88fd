#include "desk/Suggestions.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "desk/Text.h"

namespace qvn::tools {
namespace {

constexpr std::size_t kMost = 3;
constexpr std::size_t kLongestName = 100;

std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above + 1, row[j - 1] + 1, replaced});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::vector<std::string> closestNames(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string wanted = lowerCase(name.substr(0, kLongestName));
    if (wanted.size() < 2) {
        return {};
    }
    const std::size_t limit = std::max<std::size_t>(2, wanted.size() / 4);
    std::vector<std::pair<std::size_t, std::string>> ranked;
    for (const std::string& candidate : candidates) {
        const std::string known = lowerCase(candidate);
        // A name that only lacks its message (VehSpd for ESP_FD2_VehSpd) is close whatever its length.
        const bool contained = wanted.size() > 3 && known != wanted && known.find(wanted) != std::string::npos;
        if (!contained && (known.size() > wanted.size() + limit || wanted.size() > known.size() + limit)) {
            continue;  // each character that is missing or too much is one edit
        }
        const std::size_t distance = contained ? 1 : editDistance(wanted, known);
        if (distance <= limit) {
            ranked.emplace_back(distance, candidate);
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> best;
    for (auto& entry : ranked) {
        // Where one name is very close, others that look a little alike would confuse.
        const bool plausible = entry.first <= 2 * ranked.front().first;
        if (plausible && best.size() < kMost && std::find(best.begin(), best.end(), entry.second) == best.end()) {
            best.push_back(std::move(entry.second));
        }
    }
    return best;
}

std::string suggestionText(std::string_view name, const std::vector<std::string>& candidates) {
    const std::vector<std::string> names = closestNames(name, candidates);
    if (names.empty()) {
        return {};
    }
    std::string text = "; did you mean " + names.front();
    for (std::size_t i = 1; i < names.size(); ++i) {
        text += (i + 1 == names.size() ? " or " : ", ") + names[i];
    }
    return text + "?";
}

}  // namespace qvn::tools

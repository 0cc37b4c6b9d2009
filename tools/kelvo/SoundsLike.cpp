#include "SoundsLike.h"

#include <algorithm>
#include <cctype>

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostSuggestions = 3;

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

// Damerau-Levenshtein, neighbours exchanged at most once.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> best(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        best[i][j] = i + j;
        continue;
      }
      best[i][j] = std::min(
          {best[i - 1][j] + 1, best[i][j - 1] + 1, best[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        best[i][j] = std::min(best[i][j], best[i - 2][j - 2] + 1);
      }
    }
  }
  return best[a.size()][b.size()];
}

}  // namespace

std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates) {
  const std::string sought = Lower(name);
  if (sought.size() > 100) return {};
  const std::size_t most = std::max<std::size_t>(2, sought.size() / 3);
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& candidate : candidates) {
    const std::string lower = Lower(candidate);
    const bool begins = sought.size() > 1 && lower.starts_with(sought);
    const std::size_t distance = begins ? 1 : Distance(sought, lower);
    if (distance <= most && distance < sought.size()) near.emplace_back(distance, candidate);
  }
  std::ranges::sort(near);
  if (near.size() > MostSuggestions) near.resize(MostSuggestions);
  std::string text;
  for (std::size_t i = 0; i < near.size(); ++i) {
    text += i == 0 ? "Did you mean '" : i + 1 == near.size() ? "' or '" : "', '";
    text += near[i].second;
  }
  return text.empty() ? text : text + "'?";
}

}  // namespace VELTRO::KELVO::Tool

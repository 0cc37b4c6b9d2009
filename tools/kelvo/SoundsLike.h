// What somebody who mistyped a name may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace VELTRO::KELVO::Tool {

// "Did you mean 'A' or 'B'?": the candidates that differ least from the name, by letters that are others, missing, too
// many or exchanged. Empty when none is near.
std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace VELTRO::KELVO::Tool

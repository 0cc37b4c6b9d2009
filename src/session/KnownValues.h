// Texts of values that come again.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace VELTRO::KELVO::ClientLib::Recording {

// Sessions ask the same and are answered the same again and again: the text of a value that comes again is kept.
class KnownValues {
 public:
  // Appends what was kept for such a value of such a call, if anything was.
  bool Append(std::string& text, std::string_view name, std::string_view method, std::span<const char> value);
  // To be called when there was nothing: keeps the text, if the value comes for the second time.
  void Keep(std::string_view name, std::string_view method, std::span<const char> value,
            std::string_view text);

 private:
  static constexpr std::size_t Places = 64;
  static constexpr std::size_t MostBytes = 128;  // of a value; more do not come again

  struct Known {
    std::size_t LatestHash = 0;
    std::string_view Name;
    std::string Method;
    std::string Value;
    std::string Text;
  };

  std::vector<Known> places_{Places};
  Known* place_ = nullptr;  // of the latest value; null when that cannot be kept
  bool comesAgain_ = false;
};

}  // namespace VELTRO::KELVO::ClientLib::Recording
